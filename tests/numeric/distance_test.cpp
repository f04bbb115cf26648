#include <cmath>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "numeric/HClusterDistance.h"

#include "reference/points.h"
#include "support/log_capture.h"

namespace {

constexpr double sentinel = 9223372036854775808.0;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
using Members = std::vector<int>;
using Points = std::vector<HPointN>;

HPointN point(std::vector<double> const& coordinates) {
  return {coordinates};
}

Points line(std::vector<double> const& values) {
  Points points;
  for (double const value : values) {
    points.push_back(point({value}));
  }
  return points;
}

// Corners of an equilateral triangle whose three distances have the same bits.
Points triangle() {
  return {point({1, 0, 0}), point({0, 1, 0}), point({0, 0, 1})};
}

TEST(HClusterDistance, has_no_state) {
  EXPECT_TRUE(std::is_empty_v<HClusterDistance>);
  HClusterDistance const made;
}

TEST(HClusterDistance, distance_is_that_of_the_points) {
  EXPECT_EQ(HClusterDistance::get_distance(point({0, 0}), point({3, 4})), 5.0);
  EXPECT_EQ(HClusterDistance::get_distance(point({0, 0}), point({3})), sentinel);
}

TEST(HClusterDistance, mean_of_fewer_than_two_points_is_zero) {
  EXPECT_EQ(HClusterDistance::get_avg_distance({}), 0.0);
  EXPECT_EQ(HClusterDistance::get_avg_distance(line({7})), 0.0);
}

TEST(HClusterDistance, mean_of_two_points_is_their_distance) {
  EXPECT_EQ(HClusterDistance::get_avg_distance({point({0, 0}), point({3, 4})}), 5.0);
}

TEST(HClusterDistance, mean_is_over_unordered_pairs) {
  EXPECT_EQ(HClusterDistance::get_avg_distance(line({0, 1, 3})), 2.0);
}

TEST(HClusterDistance, mean_counts_points_of_different_size_as_very_far) {
  EXPECT_EQ(HClusterDistance::get_avg_distance({point({0}), point({0, 0})}), sentinel);
}

TEST(HClusterDistance, mean_of_a_nan_is_a_nan) {
  EXPECT_TRUE(std::isnan(HClusterDistance::get_avg_distance(line({0, 1, nan}))));
}

TEST(HClusterDistance, the_smallest_pair_is_found) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({0, 10, 4, 9}), i, j), 1.0);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(j, 3);
}

TEST(HClusterDistance, of_equal_smallest_pairs_the_first_wins) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_min_distance_index(triangle(), i, j), std::sqrt(2.0));
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 1);
}

TEST(HClusterDistance, pairs_are_visited_row_by_row) {
  int i = -7;
  int j = -7;
  // (0, 3) and (1, 2) are equally close; row 0 comes first although 3 is behind 2.
  HClusterDistance::get_min_distance_index(line({0, 10, 11, 1}), i, j);
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 3);
}

TEST(HClusterDistance, smallest_of_fewer_than_two_points_is_the_sentinel) {
  int i = -7;
  int j = -9;
  EXPECT_EQ(HClusterDistance::get_min_distance_index({}, i, j), sentinel);
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({3}), i, j), sentinel);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(j, -9);
}

TEST(HClusterDistance, smallest_needs_a_distance_below_the_sentinel) {
  int i = -7;
  int j = -9;
  EXPECT_EQ(HClusterDistance::get_min_distance_index({point({0}), point({0, 0})}, i, j), sentinel);
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({0, sentinel}), i, j), sentinel);
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({0, 1e300}), i, j), sentinel);
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({0, nan}), i, j), sentinel);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(j, -9);
}

TEST(HClusterDistance, the_smallest_distance_can_be_zero) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_min_distance_index(line({5, 1, 1, 1}), i, j), 0.0);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(j, 2);
}

TEST(HClusterDistance, the_largest_pair_is_found) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({1, 0, 4, 9}), i, j), 9.0);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(j, 3);
}

TEST(HClusterDistance, of_equal_largest_pairs_the_first_wins) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_max_distance_index(triangle(), i, j), std::sqrt(2.0));
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 1);
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({0, 9, 4, 9, 0}), i, j), 9.0);
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 1);
}

TEST(HClusterDistance, identical_points_have_no_largest_pair) {
  int i = -7;
  int j = -9;
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({3, 3, 3}), i, j), 0.0);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(j, -9);
}

TEST(HClusterDistance, fewer_than_two_points_have_no_largest_pair) {
  int i = -7;
  int j = -9;
  EXPECT_EQ(HClusterDistance::get_max_distance_index({}, i, j), 0.0);
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({3}), i, j), 0.0);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(j, -9);
}

TEST(HClusterDistance, points_of_different_size_are_very_far_apart) {
  int i = -7;
  int j = -7;
  Points const points{point({0}), point({100}), point({0, 0})};
  EXPECT_EQ(HClusterDistance::get_max_distance_index(points, i, j), sentinel);
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 2);
}

TEST(HClusterDistance, a_nan_is_not_the_largest_distance) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({nan, 1, 2}), i, j), 1.0);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(j, 2);
}

TEST(HClusterDistance, an_overflow_is_the_largest_distance) {
  int i = -7;
  int j = -7;
  EXPECT_EQ(HClusterDistance::get_max_distance_index(line({0, 1e100, -1e300}), i, j),
            std::numeric_limits<double>::infinity());
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 2);
}

TEST(HClusterDistance, the_farthest_points_are_delivered_whole) {
  Points points = line({1, 0, 9});
  points[1].str_label = L"zero";
  points[2].str_label = L"nine";
  HPointN a(L"old", {1, 2});
  HPointN b;
  EXPECT_EQ(HClusterDistance::get_max_distance_point(points, a, b), 9.0);
  EXPECT_EQ(a.str_label, HString(L"zero"));
  EXPECT_EQ(a.vt_data, (std::vector<double>{0}));
  EXPECT_EQ(a.n, 1);
  EXPECT_EQ(b.str_label, HString(L"nine"));
  EXPECT_EQ(b.vt_data, (std::vector<double>{9}));
}

TEST(HClusterDistance, the_closest_points_are_delivered_whole) {
  Points points = line({1, 5, 9, 8});
  points[2].str_label = L"nine";
  points[3].str_label = L"eight";
  HPointN a;
  HPointN b;
  EXPECT_EQ(HClusterDistance::get_min_distance_point(points, a, b), 1.0);
  EXPECT_EQ(a.str_label, HString(L"nine"));
  EXPECT_EQ(a.vt_data, (std::vector<double>{9}));
  EXPECT_EQ(b.str_label, HString(L"eight"));
  EXPECT_EQ(b.vt_data, (std::vector<double>{8}));
  EXPECT_EQ(b.n, 1);
}

TEST(HClusterDistance, one_point_is_both_ends) {
  Points points = line({4});
  points[0].str_label = L"only";
  HPointN a;
  HPointN b;
  EXPECT_EQ(HClusterDistance::get_max_distance_point(points, a, b), 0.0);
  EXPECT_EQ(HClusterDistance::get_min_distance_point(points, a, b), sentinel);
  EXPECT_EQ(a.str_label, HString(L"only"));
  EXPECT_EQ(b.str_label, HString(L"only"));
  EXPECT_EQ(b.vt_data, (std::vector<double>{4}));
}

TEST(HClusterDistance, without_a_pair_both_ends_are_the_first_point) {
  HPointN a;
  HPointN b;
  EXPECT_EQ(HClusterDistance::get_max_distance_point(line({6, 6}), a, b), 0.0);
  EXPECT_EQ(a.vt_data, (std::vector<double>{6}));
  EXPECT_EQ(b.vt_data, (std::vector<double>{6}));
  EXPECT_EQ(HClusterDistance::get_min_distance_point({point({6}), point({})}, a, b), sentinel);
  EXPECT_EQ(a.vt_data, (std::vector<double>{6}));
  EXPECT_EQ(b.vt_data, (std::vector<double>{6}));
}

TEST(HClusterDistance, no_points_leave_both_ends) {
  HPointN a(L"a", {1});
  HPointN b(L"b", {2});
  HClusterDistance::get_max_distance_point({}, a, b);
  HClusterDistance::get_min_distance_point({}, a, b);
  EXPECT_EQ(a.str_label, HString(L"a"));
  EXPECT_EQ(b.vt_data, (std::vector<double>{2}));
}

TEST(HClusterDistance, sum_from_a_point_is_over_the_list) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(point({1}), {}), 0.0);
  EXPECT_EQ(HClusterDistance::get_distance_sum(point({1}), line({1, 3, -4})), 7.0);
  EXPECT_EQ(HClusterDistance::get_distance_sum(point({1}), {point({1, 1})}), sentinel);
}

TEST(HClusterDistance, sum_adds_in_list_order) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(point({0}), line({0x1p53, 1, 1})), 0x1p53);
  EXPECT_EQ(HClusterDistance::get_distance_sum(point({0}), line({1, 1, 0x1p53})), 0x1p53 + 2);
}

TEST(HClusterDistance, sum_from_an_index_is_over_the_members) {
  Points const points = line({0, 1, 10, 100});
  EXPECT_EQ(HClusterDistance::get_distance_sum(points, 1, Members{0, 3}), 100.0);
  EXPECT_EQ(HClusterDistance::get_distance_sum(points, 1, Members{1}), 0.0);
}

TEST(HClusterDistance, sum_adds_a_repeated_member_again) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(line({0, 2}), 0, Members{1, 1, 1}), 6.0);
}

TEST(HClusterDistance, sum_skips_members_outside_the_list) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(line({0, 2}), 0, Members{-1, 1, 2, 99}), 2.0);
}

TEST(HClusterDistance, sum_from_an_index_outside_the_list_is_zero) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(line({0, 2}), 2, Members{0}), 0.0);
  EXPECT_EQ(HClusterDistance::get_distance_sum(line({0, 2}), -1, Members{0}), 0.0);
  EXPECT_EQ(HClusterDistance::get_distance_sum(Points{}, 0, Members{0}), 0.0);
}

TEST(HClusterDistance, sum_without_members_is_zero) {
  EXPECT_EQ(HClusterDistance::get_distance_sum(line({0, 2}), 0, Members{}), 0.0);
}

TEST(HClusterDistance, radius_of_one_member_is_zero) {
  EXPECT_EQ(HClusterDistance::get_max_radius(line({0, 3, 8}), {1}), 0.0);
}

TEST(HClusterDistance, radius_reaches_from_the_mean_to_the_farthest_member) {
  EXPECT_EQ(HClusterDistance::get_max_radius(line({0, 3, 9, 100}), {0, 1, 2}), 5.0);
}

TEST(HClusterDistance, radius_without_valid_members_is_zero) {
  EXPECT_EQ(HClusterDistance::get_max_radius(line({0, 3}), {}), 0.0);
  EXPECT_EQ(HClusterDistance::get_max_radius(line({0, 3}), {-1, 2}), 0.0);
  EXPECT_EQ(HClusterDistance::get_max_radius({}, {0}), 0.0);
}

TEST(HClusterDistance, radius_skips_members_outside_the_list) {
  EXPECT_EQ(HClusterDistance::get_max_radius(line({0, 4}), {-1, 0, 1, 2}), 2.0);
}

TEST(HClusterDistance, radius_to_a_member_of_another_size_is_the_sentinel) {
  EXPECT_EQ(HClusterDistance::get_max_radius({point({0}), point({0, 0})}, {0, 1}), sentinel);
}

TEST(HClusterDistance, nothing_is_logged) {
  test::LogCapture const log;
  Points const points = line({0, 2});
  HPointN a;
  HPointN b;
  int i = 0;
  int j = 0;
  HClusterDistance::get_avg_distance({});
  HClusterDistance::get_min_distance_index({}, i, j);
  HClusterDistance::get_max_distance_index({}, i, j);
  HClusterDistance::get_min_distance_point({}, a, b);
  HClusterDistance::get_max_distance_point({}, a, b);
  HClusterDistance::get_distance_sum(points, 7, Members{9});
  HClusterDistance::get_max_radius(points, {-1, 9});
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
