#include <cmath>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "numeric/HClusterCenter.h"

#include "support/log_capture.h"

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
using Points = std::vector<HPointN>;
using Values = std::vector<double>;

HPointN point(Values const& coordinates) {
  return {L"label", coordinates};
}

Points line(Values const& values) {
  Points points;
  for (double const value : values) {
    points.push_back(point({value}));
  }
  return points;
}

double median_of(Values const& values) {
  std::vector<int> members;
  for (std::size_t i = 0; i < values.size(); ++i) {
    members.push_back(static_cast<int>(i));
  }
  return HClusterCenter::get_median_point(line(values), members).at(0);
}

void expect_no_coordinates(HPointN const& made) {
  EXPECT_EQ(made.n, 0);
  EXPECT_TRUE(made.vt_data.empty());
  EXPECT_TRUE(made.str_label.empty());
}

TEST(HClusterCenter, has_no_state) {
  EXPECT_TRUE(std::is_empty_v<HClusterCenter>);
  HClusterCenter const made;
}

TEST(HClusterCenter, an_empty_point_has_zeros) {
  HPointN const made = HClusterCenter::get_empty_point(3);
  EXPECT_EQ(made.n, 3);
  EXPECT_EQ(made.vt_data, (Values{0, 0, 0}));
  EXPECT_TRUE(made.str_label.empty());
}

TEST(HClusterCenter, an_empty_point_below_one_dimension_has_no_coordinates) {
  expect_no_coordinates(HClusterCenter::get_empty_point(0));
  expect_no_coordinates(HClusterCenter::get_empty_point(-5));
}

TEST(HClusterCenter, mean_of_members_is_by_coordinate_and_without_label) {
  HPointN const made = HClusterCenter::get_center_point({point({2, 2}), point({4, 4})}, {0, 1});
  EXPECT_EQ(made.vt_data, (Values{3, 3}));
  EXPECT_EQ(made.n, 2);
  EXPECT_TRUE(made.str_label.empty());
}

TEST(HClusterCenter, mean_of_members_without_a_valid_one_is_the_zero_point) {
  test::LogCapture const log;
  HPointN const made = HClusterCenter::get_center_point({point({2, 2}), point({4, 4})}, {-1, 99});
  EXPECT_EQ(made.vt_data, (Values{0, 0}));
  EXPECT_EQ(made.n, 2);
  EXPECT_TRUE(log.records().empty());
}

TEST(HClusterCenter, mean_skips_members_outside_the_list) {
  EXPECT_EQ(HClusterCenter::get_center_point(line({2, 4}), {-1, 0, 1, 2}).vt_data, (Values{3}));
}

TEST(HClusterCenter, mean_counts_a_repeated_member_again) {
  EXPECT_EQ(HClusterCenter::get_center_point(line({0, 4}), {0, 1, 1, 1}).vt_data, (Values{3}));
}

TEST(HClusterCenter, mean_of_nothing_has_no_coordinates) {
  expect_no_coordinates(HClusterCenter::get_center_point({}, {0}));
  expect_no_coordinates(HClusterCenter::get_center_point(line({1}), {}));
  expect_no_coordinates(HClusterCenter::get_center_point({}));
}

TEST(HClusterCenter, mean_takes_the_dimension_of_the_first_point_of_the_list) {
  Points const points{point({1, 1}), point({4, 4, 4})};
  EXPECT_EQ(HClusterCenter::get_center_point(points, {1}).vt_data, (Values{0, 0}));
}

TEST(HClusterCenter, a_member_of_another_dimension_dilutes_the_mean) {
  Points const points{point({4}), point({9, 9})};
  EXPECT_EQ(HClusterCenter::get_center_point(points, {0, 1}).vt_data, (Values{2}));
  EXPECT_EQ(HClusterCenter::get_center_point(points).vt_data, (Values{2}));
}

TEST(HClusterCenter, mean_adds_in_member_order) {
  Points const points = line({0x1p53, 1, 1});
  EXPECT_EQ(HClusterCenter::get_center_point(points, {0, 1, 2}).at(0), 0x1p53 / 3);
  EXPECT_EQ(HClusterCenter::get_center_point(points, {1, 2, 0}).at(0), (0x1p53 + 2) / 3);
}

TEST(HClusterCenter, mean_of_all_points) {
  HPointN const made = HClusterCenter::get_center_point({point({1, 0}), point({2, 9})});
  EXPECT_EQ(made.vt_data, (Values{1.5, 4.5}));
  EXPECT_TRUE(made.str_label.empty());
}

TEST(HClusterCenter, mean_of_negative_zeros_is_positive) {
  EXPECT_FALSE(std::signbit(HClusterCenter::get_center_point(line({-0.0, -0.0})).at(0)));
  EXPECT_FALSE(std::signbit(HClusterCenter::get_center_point(line({-0.0}), {0}).at(0)));
}

TEST(HClusterCenter, median_of_an_odd_number_is_the_middle_value) {
  EXPECT_EQ(median_of({5}), 5.0);
  EXPECT_EQ(median_of({3, 1, 2}), 2.0);
  EXPECT_EQ(median_of({9, 8, 1, 2, 7}), 7.0);
}

TEST(HClusterCenter, median_of_an_even_number_lies_above_the_middle) {
  EXPECT_EQ(median_of({4, 2, 1, 3}), 3.5);
  EXPECT_EQ(median_of({1, 2, 3, 4, 5, 16}), 4.5);
}

TEST(HClusterCenter, median_of_two_is_the_upper_value) {
  EXPECT_EQ(median_of({1, 2}), 2.0);
  EXPECT_EQ(median_of({2, 1}), 2.0);
  EXPECT_EQ(median_of({-3, -3}), -3.0);
}

TEST(HClusterCenter, median_goes_by_coordinate) {
  Points const points{point({1, 30}), point({2, 10}), point({3, 20})};
  HPointN const made = HClusterCenter::get_median_point(points, {0, 1, 2});
  EXPECT_EQ(made.vt_data, (Values{2, 20}));
  EXPECT_EQ(made.n, 2);
  EXPECT_TRUE(made.str_label.empty());
}

TEST(HClusterCenter, median_takes_the_listed_members_only) {
  EXPECT_EQ(HClusterCenter::get_median_point(line({9, 1, 2, 3, 9}), {3, 2, 1}).at(0), 2.0);
  EXPECT_EQ(HClusterCenter::get_median_point(line({1, 5, 6}), {0, 0, 0, 1, 2}).at(0), 1.0);
}

TEST(HClusterCenter, median_of_nothing_has_no_coordinates) {
  expect_no_coordinates(HClusterCenter::get_median_point({}, {0}));
  expect_no_coordinates(HClusterCenter::get_median_point(line({1}), {}));
}

TEST(HClusterCenter, median_skips_members_outside_the_list) {
  EXPECT_EQ(HClusterCenter::get_median_point(line({1, 2, 3}), {-1, 0, 1, 2, 3, 99}).at(0), 2.0);
  expect_no_coordinates(HClusterCenter::get_median_point(line({1, 2}), {-1, 2}));
}

TEST(HClusterCenter, median_takes_a_missing_coordinate_as_zero) {
  Points const points{point({5, 5}), point({7}), point({6, -5})};
  EXPECT_EQ(HClusterCenter::get_median_point(points, {0, 1, 2}).vt_data, (Values{6, 0}));
}

TEST(HClusterCenter, median_drops_coordinates_beyond_the_first_point) {
  Points const points{point({5}), point({7, 8})};
  EXPECT_EQ(HClusterCenter::get_median_point(points, {1}).vt_data, (Values{7}));
}

TEST(HClusterCenter, median_orders_negative_zero_before_zero) {
  EXPECT_TRUE(std::signbit(median_of({0.0, -0.0, -0.0})));
  EXPECT_FALSE(std::signbit(median_of({0.0, -0.0})));
  EXPECT_FALSE(std::signbit(median_of({0.0, 0.0, -0.0})));
}

TEST(HClusterCenter, median_orders_nan_last) {
  EXPECT_EQ(median_of({nan, 1, 2}), 2.0);
  EXPECT_EQ(median_of({infinity, nan, -infinity}), infinity);
  EXPECT_TRUE(std::isnan(median_of({nan, 1})));
  EXPECT_TRUE(std::isnan(median_of({1, 2, 3, -nan})));
}

TEST(HClusterCenter, median_of_two_huge_values_stays_finite) {
  EXPECT_EQ(median_of({1e308, 1.5e308}), 1.5e308);
}

TEST(HClusterCenter, nothing_is_logged) {
  test::LogCapture const log;
  HClusterCenter::get_empty_point(-1);
  HClusterCenter::get_center_point({});
  HClusterCenter::get_center_point(line({1}), {});
  HClusterCenter::get_median_point(line({1}), {5});
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
