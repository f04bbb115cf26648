#include "numeric/internal/inverted_search.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "cluster/random_cases.h"
#include "numeric/searched_points.h"

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::Rows;
using reference::Matrix;
using reference::RandomMatrix;
using test::Searched;
using Border = morva::DistanceTable::Border;

Rows random_rows(std::size_t size, RandomMatrix& random) {
  auto const last = static_cast<int>(size);
  auto const a = static_cast<std::size_t>(random.one_in(2) ? 0 : random.integer(0, last));
  auto const b = static_cast<std::size_t>(random.one_in(2) ? last : random.integer(0, last));
  return {std::min(a, b), std::max(a, b)};
}

// Calls `check(points, rows, random)` for documents, the rows to be searched among them.
template <typename Check>
void for_documents(std::uint64_t seed, Check const& check) {
  for (int round = 0; round * test::share_of_rounds < 40; ++round) {
    RandomMatrix random(seed + static_cast<std::uint64_t>(round));
    Matrix const matrix = test::documents(random.integer(60, 180), !random.one_in(4), random);
    Searched const points(matrix, static_cast<std::size_t>(random.integer(1, 6)));
    SCOPED_TRACE("round " + std::to_string(round));
    check(points, matrix, random);
    if (testing::Test::HasFailure()) {
      return;
    }
  }
}

Border random_border(RandomMatrix& random) {
  return random.one_in(2) ? Border::inside : Border::outside;
}

TEST(InvertedSearch, documents_have_the_neighbours_of_the_plain_form) {
  for_documents(100, [](Searched const& points, Matrix const& matrix, RandomMatrix& random) {
    test::expect_same_neighbours(points, random_rows(points.size(), random), random.radius(matrix),
                                 random_border(random));
  });
}

TEST(InvertedSearch, documents_have_the_smallest_distances_of_the_plain_form) {
  for_documents(200, [](Searched const& points, Matrix const&, RandomMatrix& random) {
    test::expect_same_smallest(points, random_rows(points.size(), random),
                               static_cast<std::size_t>(random.integer(0, 12)));
  });
}

TEST(InvertedSearch, documents_have_the_greatest_distance_within_a_limit_of_the_plain_form) {
  for_documents(300, [](Searched const& points, Matrix const& matrix, RandomMatrix& random) {
    test::expect_same_greatest(points, random_rows(points.size(), random), random.radius(matrix));
  });
}

TEST(InvertedSearch, documents_have_the_closest_pair_of_the_plain_form) {
  for_documents(400, [](Searched const& points, Matrix const&, RandomMatrix& random) {
    test::expect_same_closest(points, random_rows(points.size(), random));
  });
}

TEST(InvertedSearch, points_of_every_kind_have_the_results_of_the_plain_form) {
  int searched = 0;
  test::for_random_points(60, 9'000'000, [&](Matrix const& matrix, RandomMatrix& random) {
    Searched const points(matrix, static_cast<std::size_t>(random.integer(1, 4)));
    if (!points.is_possible()) {
      return;
    }
    ++searched;
    Rows const rows = random_rows(points.size(), random);
    test::expect_same_neighbours(points, rows, random.radius(matrix), random_border(random));
    test::expect_same_smallest(points, rows, static_cast<std::size_t>(random.integer(0, 9)));
    test::expect_same_greatest(points, rows, random.radius(matrix));
    test::expect_same_closest(points, rows);
  });
  EXPECT_GT(searched, 0);
}

}  // namespace
