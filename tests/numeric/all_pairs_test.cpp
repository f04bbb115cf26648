#include "numeric/internal/all_pairs.h"

#include <gtest/gtest.h>

#include "numeric/searched_points.h"

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::Rows;
using reference::Matrix;
using reference::RandomMatrix;
using test::Searched;

// Of so many, most of which are 2^45 times as short as the first.
Matrix documents_beside_a_long_one(int count, RandomMatrix& random) {
  Matrix rows = test::documents(count, true, random);
  rows.front().assign(300, 0.0);
  rows.front()[7] = 0x1p45;
  return rows;
}

// Enough documents for a table to make an index of them.
constexpr int indexed_count = 600;

void expect_same_searches(Matrix const& matrix, Searched const& points, RandomMatrix& random) {
  Rows const all{0, points.size()};
  Rows const some{200, 300};
  double const limit = random.radius(matrix);
  test::expect_same_neighbours(points, all, limit, morva::DistanceTable::Border::outside);
  test::expect_same_smallest(points, some, 8);
  test::expect_same_greatest(points, some, limit);
  test::expect_same_closest(points, all);
}

TEST(AllPairs, searches_by_an_index_have_the_results_of_the_plain_form) {
  RandomMatrix random(17);
  Matrix const matrix = test::documents(indexed_count, true, random);
  Searched const points(matrix);
  ASSERT_NE(points.table().index(), nullptr);
  expect_same_searches(matrix, points, random);
}

TEST(AllPairs, one_point_that_is_far_longer_leaves_the_others_to_bounds_that_tell_them_apart) {
  RandomMatrix random(18);
  Matrix const matrix = documents_beside_a_long_one(indexed_count, random);
  Searched const points(matrix);
  ASSERT_TRUE(points.table().has_sparse_bounds());
  EXPECT_EQ(points.table().index(), nullptr);
  expect_same_searches(matrix, points, random);
}

}  // namespace
