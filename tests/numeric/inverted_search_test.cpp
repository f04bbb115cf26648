#include "numeric/internal/inverted_search.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "cluster/random_cases.h"
#include "numeric/internal/distance_table.h"

#include "reference/measures.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::DistanceTable;
using morva::InvertedIndex;
using morva::InvertedSearch;
using morva::Rows;
using reference::Matrix;
using reference::RandomMatrix;
using Border = DistanceTable::Border;

// The points of a matrix with their plain distances, and searches over them: by an index of so many
// bands, or as the table itself chooses.
class Searched {
 public:
  explicit Searched(Matrix const& rows)
      : rows_(rows),
        table_(morva::compress(reference::to_points(rows)), DistanceTable::Form::sparse) {}
  Searched(Matrix const& rows, std::size_t bands)
      : rows_(rows),
        table_(morva::compress(reference::to_points(rows)), DistanceTable::Form::sparse) {
    if (table_.has_sparse_bounds()) {
      index_.emplace(table_.points(), bands);
    }
  }

  bool is_possible() const { return index_.has_value(); }
  std::size_t size() const { return rows_.size(); }
  DistanceTable const& table() const { return table_; }
  void neighbours(Rows rows, double limit, Border border,
                  morva::VisitNeighbours const& visit) const {
    if (index_) {
      InvertedSearch(table_, *index_).neighbours(rows, limit, border, visit);
    } else {
      morva::for_each_neighbourhood(table_, limit, border, visit, rows);
    }
  }
  Matrix smallest_distances(Rows rows, std::size_t count) const {
    return index_ ? InvertedSearch(table_, *index_).smallest_distances(rows, count)
                  : morva::smallest_distances(table_, count, rows);
  }
  std::vector<double> greatest_within(Rows rows, double limit) const {
    return index_ ? InvertedSearch(table_, *index_).greatest_within(rows, limit)
                  : morva::greatest_within(table_, limit, rows);
  }
  std::optional<morva::FoundPair> closest_pair(Rows rows) const {
    return index_ ? InvertedSearch(table_, *index_).closest_pair(rows)
                  : morva::closest_pair(table_);
  }
  double distance(std::size_t i, std::size_t j) const {
    return reference::distance(rows_[i], rows_[j]);
  }

 private:
  Matrix const& rows_;
  DistanceTable table_;
  std::optional<InvertedIndex> index_;
};

void expect_same_neighbours(Searched const& points, Rows rows, double limit, Border border) {
  std::size_t row = rows.begin;
  points.neighbours(rows, limit, border, [&](std::size_t i, std::span<std::uint32_t const> near) {
    ASSERT_EQ(i, row++);
    std::vector<std::uint32_t> expected;
    for (std::size_t j = i; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      if (border == Border::inside ? d <= limit : d < limit) {
        expected.push_back(static_cast<std::uint32_t>(j));
      }
    }
    EXPECT_EQ(std::vector(near.begin(), near.end()), expected) << "row " << i;
  });
  EXPECT_EQ(row, rows.end);
}

void expect_same_smallest(Searched const& points, Rows rows, std::size_t count) {
  Matrix const found = points.smallest_distances(rows, count);
  ASSERT_EQ(found.size(), rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    std::vector<double> expected;
    for (std::size_t j = 0; j < points.size(); ++j) {
      if (j != i) {
        expected.push_back(points.distance(i, j));
      }
    }
    reference::sort_values(expected);
    expected.resize(std::min(expected.size(), count));
    EXPECT_TRUE(reference::is_same(found[i - rows.begin], expected)) << "row " << i;
  }
}

void expect_same_greatest(Searched const& points, Rows rows, double limit) {
  std::vector<double> const found = points.greatest_within(rows, limit);
  ASSERT_EQ(found.size(), rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    double expected = 0.0;
    for (std::size_t j = 0; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      expected = j != i && d <= limit && d > expected ? d : expected;
    }
    EXPECT_TRUE(reference::is_same(found[i - rows.begin], expected)) << "row " << i;
  }
}

void expect_same_closest(Searched const& points, Rows rows) {
  std::optional<morva::FoundPair> expected;
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    for (std::size_t j = i + 1; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      if (d < (expected ? expected->distance : reference::no_distance)) {
        expected = morva::FoundPair{i, j, d};
      }
    }
  }
  auto const found = points.closest_pair(rows);
  ASSERT_EQ(found.has_value(), expected.has_value());
  if (found) {
    EXPECT_EQ(found->i, expected->i);
    EXPECT_EQ(found->j, expected->j);
    EXPECT_TRUE(reference::is_same(found->distance, expected->distance));
  }
}

Rows random_rows(std::size_t size, RandomMatrix& random) {
  auto const last = static_cast<int>(size);
  auto const a = static_cast<std::size_t>(random.one_in(2) ? 0 : random.integer(0, last));
  auto const b = static_cast<std::size_t>(random.one_in(2) ? last : random.integer(0, last));
  return {std::min(a, b), std::max(a, b)};
}

// Some words in most rows and most in few, weights that fall, rows that repeat others with and
// without a change, and short ones.
Matrix documents(int count, bool positive, RandomMatrix& random) {
  Matrix rows;
  for (int i = 0; i < count; ++i) {
    reference::Point row =
        rows.empty() || !random.one_in(6) ? reference::zero_point(300) : random.pick(rows);
    for (int w = random.one_in(6) ? random.integer(0, 2) : random.integer(0, 25); w > 0; --w) {
      double const rank = random.unit() * random.unit() * random.unit();
      double const weight = random.one_in(3) ? 0.5 : 1.0 / random.integer(1, 9);
      row[static_cast<std::size_t>(300.0 * rank)] =
          !positive && random.one_in(4) ? -weight : weight;
    }
    rows.push_back(row);
  }
  return rows;
}

// Calls `check(points, rows, random)` for documents, the rows to be searched among them.
template <typename Check>
void for_documents(std::uint64_t seed, Check const& check) {
  for (int round = 0; round * test::share_of_rounds < 40; ++round) {
    RandomMatrix random(seed + static_cast<std::uint64_t>(round));
    Matrix const matrix = documents(random.integer(60, 180), !random.one_in(4), random);
    Searched const points(matrix, static_cast<std::size_t>(random.integer(1, 6)));
    SCOPED_TRACE("round " + std::to_string(round));
    check(points, matrix, random);
    if (testing::Test::HasFailure()) {
      return;
    }
  }
}

// Of so many, most of which are 2^45 times as short as the first.
Matrix documents_beside_a_long_one(int count, RandomMatrix& random) {
  Matrix rows = documents(count, true, random);
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
  expect_same_neighbours(points, all, limit, Border::outside);
  expect_same_smallest(points, some, 8);
  expect_same_greatest(points, some, limit);
  expect_same_closest(points, all);
}

Border random_border(RandomMatrix& random) {
  return random.one_in(2) ? Border::inside : Border::outside;
}

TEST(InvertedSearch, documents_have_the_neighbours_of_the_plain_form) {
  for_documents(100, [](Searched const& points, Matrix const& matrix, RandomMatrix& random) {
    expect_same_neighbours(points, random_rows(points.size(), random), random.radius(matrix),
                           random_border(random));
  });
}

TEST(InvertedSearch, documents_have_the_smallest_distances_of_the_plain_form) {
  for_documents(200, [](Searched const& points, Matrix const&, RandomMatrix& random) {
    expect_same_smallest(points, random_rows(points.size(), random),
                         static_cast<std::size_t>(random.integer(0, 12)));
  });
}

TEST(InvertedSearch, documents_have_the_greatest_distance_within_a_limit_of_the_plain_form) {
  for_documents(300, [](Searched const& points, Matrix const& matrix, RandomMatrix& random) {
    expect_same_greatest(points, random_rows(points.size(), random), random.radius(matrix));
  });
}

TEST(InvertedSearch, documents_have_the_closest_pair_of_the_plain_form) {
  for_documents(400, [](Searched const& points, Matrix const&, RandomMatrix& random) {
    expect_same_closest(points, random_rows(points.size(), random));
  });
}

TEST(InvertedSearch, points_of_every_kind_have_the_results_of_the_plain_form) {
  test::for_random_points(60, 9'000'000, [](Matrix const& matrix, RandomMatrix& random) {
    Searched const points(matrix, static_cast<std::size_t>(random.integer(1, 4)));
    if (!points.is_possible()) {
      return;
    }
    Rows const rows = random_rows(points.size(), random);
    expect_same_neighbours(points, rows, random.radius(matrix), random_border(random));
    expect_same_smallest(points, rows, static_cast<std::size_t>(random.integer(0, 9)));
    expect_same_greatest(points, rows, random.radius(matrix));
    expect_same_closest(points, rows);
  });
}

TEST(DistanceTable, searches_by_an_index_have_the_results_of_the_plain_form) {
  RandomMatrix random(17);
  Matrix const matrix = documents(indexed_count, true, random);
  Searched const points(matrix);
  ASSERT_NE(points.table().index(), nullptr);
  expect_same_searches(matrix, points, random);
}

TEST(DistanceTable, one_point_that_is_far_longer_leaves_the_others_to_bounds_that_tell_them_apart) {
  RandomMatrix random(18);
  Matrix const matrix = documents_beside_a_long_one(indexed_count, random);
  Searched const points(matrix);
  ASSERT_TRUE(points.table().has_sparse_bounds());
  EXPECT_EQ(points.table().index(), nullptr);
  expect_same_searches(matrix, points, random);
}

TEST(DistanceTable, more_values_than_are_counted_are_refused) {
  EXPECT_NO_THROW(morva::require_countable(0xFFFF'FFFF));
  EXPECT_THROW(morva::require_countable(0x1'0000'0000), std::length_error);
}

}  // namespace
