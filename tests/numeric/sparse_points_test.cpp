#include <bit>
#include <limits>

#include <gtest/gtest.h>

#include "cluster/random_cases.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"
#include "numeric/HSparsePoints.h"

#include "reference/measures.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using reference::is_same;
using reference::Matrix;
using reference::Members;
using reference::RandomMatrix;
using test::for_random_points;
using Row = HSparsePoints::Row;
using Values = std::vector<double>;

Row row(long long n, std::vector<std::uint32_t> indices, Values values) {
  return {L"", n, std::move(indices), std::move(values)};
}

// The points as rows in which each coordinate stands, zeros too.
std::vector<Row> full_rows(Matrix const& matrix) {
  std::vector<Row> rows;
  for (reference::Point const& point : matrix) {
    Row& one = rows.emplace_back();
    one.n = static_cast<long long>(point.size());
    one.values = point;
    for (std::uint32_t i = 0; i < point.size(); ++i) {
      one.indices.push_back(i);
    }
  }
  return rows;
}

Members random_members(Matrix const& points, RandomMatrix& random) {
  Members members;
  for (int i = random.integer(0, 12); i > 0; --i) {
    members.push_back(random.integer(-2, reference::count_of(points) + 1));
  }
  return members;
}

void expect_dense_answers(HSparsePoints const& sparse, Matrix const& rows, Members const& members) {
  std::vector<HPointN> const dense = reference::to_points(rows);
  ASSERT_EQ(sparse.size(), dense.size());
  for (std::size_t i = 0; i < dense.size(); ++i) {
    HPointN const point = sparse.at(static_cast<int>(i));
    EXPECT_TRUE(is_same(point.vt_data, dense[i].vt_data));
    EXPECT_EQ(point.n, dense[i].n);
  }
  HPointN const center = sparse.get_center_point(members);
  HPointN const expected = HClusterCenter::get_center_point(dense, members);
  EXPECT_TRUE(is_same(center.vt_data, expected.vt_data));
  EXPECT_EQ(center.n, expected.n);
  EXPECT_TRUE(is_same(sparse.get_max_radius(members), reference::max_radius(rows, members)));
  EXPECT_TRUE(is_same(sparse.get_avg_distance(), reference::mean_distance(rows)));
}

TEST(SparsePoints, of_points_give_the_answers_of_dense_ones) {
  for_random_points(50, 30'000'000, [](Matrix const& rows, RandomMatrix& random) {
    expect_dense_answers(HSparsePoints(reference::to_points(rows)), rows,
                         random_members(rows, random));
  });
}

TEST(SparsePoints, of_rows_give_the_answers_of_dense_ones) {
  for_random_points(50, 31'000'000, [](Matrix const& rows, RandomMatrix& random) {
    expect_dense_answers(HSparsePoints(full_rows(rows)), rows, random_members(rows, random));
  });
}

TEST(SparsePoints, without_points_every_answer_is_that_of_an_empty_list) {
  expect_dense_answers(HSparsePoints(), {}, {0, 1});
  expect_dense_answers(HSparsePoints(std::vector<HPointN>()), {}, {});
  expect_dense_answers(HSparsePoints(std::vector<Row>()), {}, {});
  EXPECT_TRUE(HSparsePoints().empty());
}

TEST(SparsePoints, keep_labels) {
  HSparsePoints const points({HPointN(L"a", Values{0.0, 1.0}), HPointN(L"b", Values{})});
  EXPECT_EQ(points.at(0).str_label, HString(L"a"));
  EXPECT_EQ(points.at(1).str_label, HString(L"b"));
}

TEST(SparsePoints, keep_a_negative_zero_and_all_bits_of_what_is_no_number) {
  double const strange = std::bit_cast<double>(0xFFF8000000001234U);
  HSparsePoints const points({HPointN(Values{0.0, -0.0, strange})});
  std::vector<std::uint64_t> bits;
  for (double const x : points.at(0).vt_data) {
    bits.push_back(std::bit_cast<std::uint64_t>(x));
  }
  EXPECT_EQ(bits, (std::vector<std::uint64_t>{0, 0x8000000000000000U, 0xFFF8000000001234U}));
}

TEST(SparsePoints, take_a_point_for_as_many_dimensions_as_it_has_coordinates) {
  HPointN point(Values{1.0, 2.0});
  point.n = 5;
  EXPECT_EQ(HSparsePoints({point}).at(0).n, 2);
}

TEST(SparsePoints, outside_the_list_have_no_coordinates) {
  HSparsePoints const points({HPointN(Values{1.0})});
  EXPECT_EQ(points.at(-1).n, 0);
  EXPECT_EQ(points.at(1).n, 0);
}

TEST(SparsePoints, leave_out_what_does_not_ascend) {
  HSparsePoints const points({row(4, {2, 1, 2, 3}, {1.0, 2.0, 3.0, 4.0})});
  EXPECT_EQ(points.at(0).vt_data, (Values{0.0, 0.0, 1.0, 4.0}));
}

TEST(SparsePoints, leave_out_what_lies_behind_the_last_dimension) {
  constexpr std::uint32_t greatest = std::numeric_limits<std::uint32_t>::max();
  HSparsePoints const points({row(2, {0, 2, greatest}, {1.0, 2.0, 3.0}), row(-3, {0}, {1.0})});
  EXPECT_EQ(points.at(0).vt_data, (Values{1.0, 0.0}));
  EXPECT_EQ(points.at(1).n, 0);
}

TEST(SparsePoints, leave_out_an_index_without_a_value_and_a_value_without_an_index) {
  HSparsePoints const points({row(3, {0, 1}, {1.0}), row(3, {0}, {1.0, 2.0})});
  EXPECT_EQ(points.at(0).vt_data, (Values{1.0, 0.0, 0.0}));
  EXPECT_EQ(points.at(1).vt_data, (Values{1.0, 0.0, 0.0}));
}

TEST(SparsePoints, outlive_what_they_were_copied_from) {
  HSparsePoints copy;
  {
    HSparsePoints const original({HPointN(Values{0.0, 3.0}), HPointN(Values{4.0, 0.0})});
    copy = original;
  }
  EXPECT_EQ(copy.get_avg_distance(), 5.0);
}

}  // namespace
