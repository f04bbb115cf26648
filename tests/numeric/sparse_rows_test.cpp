#include <array>
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "cluster/HParaPrefer.h"
#include "numeric/HClusterDistance.h"

#include "reference/eps.h"
#include "reference/measures.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using reference::is_same;
using reference::Matrix;
using reference::RandomMatrix;

// Rows of mostly zeros, and enough of them that each search works block by block and by bounds.
struct SparseCase {
  std::string name;
  int rows;
  int columns;
  int values;
};

void PrintTo(SparseCase const& each, std::ostream* out) {
  *out << each.name;
}

// A share of the values repeats, and so do some of the rows, so that distances tie.
Matrix sparse_rows(SparseCase const& shape, RandomMatrix& random) {
  Matrix rows;
  for (int i = 0; i < shape.rows; ++i) {
    if (i > 0 && random.one_in(16)) {
      rows.push_back(random.pick(rows));
      continue;
    }
    reference::Point row = reference::zero_point(shape.columns);
    for (int w = random.integer(0, 2 * shape.values); w > 0; --w) {
      // Low columns are in many rows.
      auto const column = static_cast<std::size_t>(shape.columns * random.unit() * random.unit());
      row[column] = random.one_in(4) ? 0.5 : random.unit() - (random.one_in(8) ? 1.0 : 0.0);
    }
    rows.push_back(row);
  }
  return rows;
}

void expect_same_measures(Matrix const& rows) {
  std::vector<HPointN> const points = reference::to_points(rows);
  EXPECT_PRED2([](double a, double b) { return is_same(a, b); },
               HClusterDistance::get_avg_distance(points), reference::mean_distance(rows));
  reference::Pair farthest{0.0};
  farthest.distance = HClusterDistance::get_max_distance_index(points, farthest.i, farthest.j);
  reference::Pair const expected = reference::farthest_pair(rows);
  EXPECT_TRUE(is_same(farthest.distance, expected.distance));
  EXPECT_EQ(farthest.i, expected.i);
  EXPECT_EQ(farthest.j, expected.j);
  Matrix const lists = reference::value_lists(rows, true);
  for (int const min_points : {0, 1, 4, 11}) {
    EXPECT_PRED2([](double a, double b) { return is_same(a, b); },
                 HParaPrefer::get_eps(points, min_points, true),
                 reference::estimate_eps(lists, min_points))
        << min_points << " points";
  }
}

class SparseRows : public testing::TestWithParam<SparseCase> {};

TEST_P(SparseRows, measures_have_the_bits_of_the_plain_form) {
  RandomMatrix random(7);
  expect_same_measures(sparse_rows(GetParam(), random));
}

TEST_P(SparseRows, measures_of_values_that_no_bounds_hold_for_have_them_too) {
  RandomMatrix random(8);
  Matrix rows = sparse_rows(GetParam(), random);
  for (double const special : std::array{std::numeric_limits<double>::infinity(), 1e-200, 1e200,
                                         -0.0, std::numeric_limits<double>::quiet_NaN()}) {
    auto const row = static_cast<std::size_t>(random.integer(0, GetParam().rows - 1));
    auto const column = static_cast<std::size_t>(random.integer(0, GetParam().columns - 1));
    rows[row][column] = special;
  }
  expect_same_measures(rows);
}

TEST_P(SparseRows, measures_of_points_of_other_dimensions_have_them_too) {
  RandomMatrix random(9);
  Matrix rows = sparse_rows(GetParam(), random);
  for (int i = 0; i < 3; ++i) {
    rows[static_cast<std::size_t>(random.integer(0, GetParam().rows - 1))].resize(
        static_cast<std::size_t>(random.integer(1, GetParam().columns)));
  }
  expect_same_measures(rows);
}

INSTANTIATE_TEST_SUITE_P(Shapes, SparseRows,
                         testing::Values(SparseCase{"few_rows", 35, 200, 10},
                                         SparseCase{"odd_tails", 131, 300, 12},
                                         SparseCase{"many_rows", 290, 150, 6}),
                         [](auto const& each) { return each.param.name; });

TEST(SparseReading, a_value_is_found_at_every_place_of_a_point_of_any_size) {
  for (int size = 1; size <= 75; ++size) {
    for (int place = 0; place < size; ++place) {
      reference::Point row = reference::zero_point(size);
      row[static_cast<std::size_t>(place)] = 3.0;
      std::vector<HPointN> const points = {HPointN(reference::zero_point(size)), HPointN(row)};
      ASSERT_EQ(HClusterDistance::get_avg_distance(points), 3.0) << place << " of " << size;
    }
  }
}

}  // namespace
