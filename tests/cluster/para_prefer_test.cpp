#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

#include "cluster/HParaPrefer.h"
#include "cluster/points.h"

#include "support/log_capture.h"

namespace {

using test::line;
using test::point;
using test::Points;
using Lists = std::vector<std::vector<double>>;
using Values = std::vector<double>;

Values nearest_minpts(Values const& list, int min_points) {
  Values out;
  HParaPrefer::get_nearest_minpts(list, min_points, out);
  return out;
}

Values nearest_value(Values const& list, double avg, int min_points) {
  Values out{42};
  HParaPrefer::get_nearest_value(list, avg, min_points, out);
  return out;
}

TEST(HParaPrefer, has_no_state) {
  EXPECT_TRUE(std::is_empty_v<HParaPrefer>);
  HParaPrefer const made;
}

TEST(HParaPrefer, an_outlier_takes_no_part) {
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 1, 2, 10}), 2, true), 1.6666666666666667);
}

TEST(HParaPrefer, nothing_gives_0) {
  EXPECT_EQ(HParaPrefer::get_eps({}, 3, true), 0.0);
  EXPECT_EQ(HParaPrefer::get_eps({}, -3, false), 0.0);
  EXPECT_EQ(HParaPrefer::smart_eps({}, 3), 0.0);
}

TEST(HParaPrefer, one_point_gives_nan) {
  for (int const min_points : {-1, 0, 1, 5}) {
    EXPECT_TRUE(std::isnan(HParaPrefer::get_eps(line({4}), min_points, true))) << min_points;
    EXPECT_TRUE(std::isnan(HParaPrefer::smart_eps({{}}, min_points))) << min_points;
  }
}

TEST(HParaPrefer, more_neighbours_than_there_are_give_0) {
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 1, 5}), 3, true), 0.0);
  EXPECT_GT(HParaPrefer::get_eps(line({0, 1, 5}), 2, true), 0.0);
}

TEST(HParaPrefer, no_wanted_neighbour_keeps_points_with_a_twin) {
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 0, 0.05, 9}), 0, true), 0.05);
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 0, 0.06, 9}), 0, true), 0.0);
}

TEST(HParaPrefer, no_wanted_neighbour_without_a_twin_gives_nan) {
  EXPECT_TRUE(std::isnan(HParaPrefer::get_eps(line({0, 0.01, 9}), 0, true)));
}

TEST(HParaPrefer, a_negative_number_of_neighbours_gives_0) {
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 1, 5}), -1, true), 0.0);
  EXPECT_EQ(HParaPrefer::get_eps(line({0, 1, 5}), -2147483647 - 1, true), 0.0);
}

TEST(HParaPrefer, identical_points_give_0) {
  EXPECT_EQ(HParaPrefer::get_eps(line({3, 3, 3, 3}), 2, true), 0.0);
}

TEST(HParaPrefer, similarities_are_treated_like_distances) {
  Points const points{point({1, 0}), point({0, 1}), point({1, 0})};
  // Lists (0, 1), (0, 0), (0, 1): reach 1, 0, 1.
  EXPECT_EQ(HParaPrefer::get_eps(points, 2, false), 2.0 / 3);
}

TEST(HParaPrefer, all_values_are_ascending_and_appended) {
  Lists lists{{42}};
  HParaPrefer::get_vt_all(line({0, 5, 1}), lists, true);
  EXPECT_EQ(lists, (Lists{{42}, {1, 5}, {4, 5}, {1, 4}}));
}

TEST(HParaPrefer, all_values_can_be_similarities) {
  Lists lists;
  HParaPrefer::get_vt_all({point({2, 0}), point({0, 1}), point({4, 0})}, lists, false);
  EXPECT_EQ(lists, (Lists{{0, 1}, {0, 0}, {0, 1}}));
}

TEST(HParaPrefer, all_values_order_nan_last) {
  Lists lists;
  HParaPrefer::get_vt_all({point({1, 0}), point({0, 0}), point({-1, 0})}, lists, false);
  ASSERT_EQ(lists.size(), 3U);
  EXPECT_EQ(lists[0][0], -1.0);
  EXPECT_TRUE(std::isnan(lists[0][1]));
}

TEST(HParaPrefer, all_values_of_one_point_are_none) {
  Lists lists;
  HParaPrefer::get_vt_all(line({1}), lists, true);
  EXPECT_EQ(lists, (Lists{{}}));
}

TEST(HParaPrefer, a_value_is_a_distance_or_a_similarity) {
  EXPECT_EQ(HParaPrefer::get_value(point({3, 0}), point({0, 4}), true), 5.0);
  EXPECT_EQ(HParaPrefer::get_value(point({3, 0}), point({0, 4}), false), 0.0);
}

TEST(HParaPrefer, near_values_count_distinct_ones) {
  EXPECT_EQ(nearest_minpts({1, 1, 9}, 2), (Values{1, 1, 9}));
  EXPECT_EQ(nearest_minpts({1, 1, 2, 2, 3}, 2), (Values{1, 1, 2, 2}));
  EXPECT_EQ(nearest_minpts({1, 2}, 5), (Values{1, 2}));
}

TEST(HParaPrefer, leading_zeros_do_not_count) {
  EXPECT_EQ(nearest_minpts({0, 0, 1, 2}, 1), (Values{0, 0, 1}));
  EXPECT_EQ(nearest_minpts({0, 0, 1, 2}, 0), (Values{0, 0}));
}

TEST(HParaPrefer, a_negative_count_of_near_values_gives_none) {
  EXPECT_TRUE(nearest_minpts({0, 1}, -1).empty());
}

TEST(HParaPrefer, near_values_are_appended) {
  Values out{42};
  HParaPrefer::get_nearest_minpts({1, 2}, 1, out);
  EXPECT_EQ(out, (Values{42, 1}));
  Lists lists{{42}};
  HParaPrefer::get_vt_nearest_minpts({{1, 2}, {}}, 1, lists);
  EXPECT_EQ(lists, (Lists{{42}, {1}, {}}));
}

TEST(HParaPrefer, values_within_reach_replace) {
  EXPECT_EQ(nearest_value({1, 2, 10}, 5.5, 2), (Values{1, 2}));
  EXPECT_EQ(nearest_value({8, 9, 10}, 5.5, 2), (Values{8, 9}));
  EXPECT_EQ(nearest_value({1, 2, 3}, 5.5, 1), (Values{1, 2, 3}));
  Lists lists{{42}};
  HParaPrefer::get_vt_nearest_value({{1, 2, 10}, {8, 9, 10}}, 5.5, 2, lists);
  EXPECT_EQ(lists, (Lists{{42}, {1, 2}, {8, 9}}));
}

TEST(HParaPrefer, reach_has_a_margin_that_is_included) {
  double const limit = 1.0 + 0.05999999;
  EXPECT_EQ(nearest_value({limit, 1.06}, 1.0, 0), (Values{limit}));
}

TEST(HParaPrefer, a_list_that_is_too_short_reaches_0) {
  EXPECT_EQ(nearest_value({1, 2}, 5, 3), (Values{0, 0}));
  EXPECT_EQ(nearest_value({1, 2}, 5, 2), (Values{1, 2}));
  EXPECT_EQ(nearest_value({1, 2}, 5, -1), (Values{0, 0}));
}

TEST(HParaPrefer, largest_and_smallest_have_their_bounds) {
  EXPECT_EQ(HParaPrefer::get_max_nearest({}), 0.0);
  EXPECT_EQ(HParaPrefer::get_max_nearest({-3, -1}), 0.0);
  EXPECT_EQ(HParaPrefer::get_max_nearest({1, 7, 3}), 7.0);
  EXPECT_EQ(HParaPrefer::get_min_nearest({}), 4503599627370496.0);
  EXPECT_EQ(HParaPrefer::get_min_nearest({1e300}), 4503599627370496.0);
  EXPECT_EQ(HParaPrefer::get_min_nearest({4, -2, 3}), -2.0);
}

TEST(HParaPrefer, largest_values_replace_and_smallest_are_appended) {
  Values out{42};
  HParaPrefer::get_vt_max_nearest({{1, 2}, {}}, out);
  EXPECT_EQ(out, (Values{2, 0}));
  out = {42};
  HParaPrefer::get_vt_min_nearest({{1, 2}, {}}, out);
  EXPECT_EQ(out, (Values{42, 1, 4503599627370496.0}));
}

TEST(HParaPrefer, mean_of_nothing_is_nan) {
  EXPECT_TRUE(std::isnan(HParaPrefer::get_vt_avg({})));
  EXPECT_EQ(HParaPrefer::get_vt_avg({1, 2, 6}), 3.0);
  EXPECT_EQ(HParaPrefer::get_vt_avg({0x1p53, 1, 1}), 0x1p53 / 3);
}

TEST(HParaPrefer, means_are_appended) {
  Values out{42};
  HParaPrefer::get_vt_vt_avg({{1, 3}, {5}}, out);
  EXPECT_EQ(out, (Values{42, 2, 5}));
}

TEST(HParaPrefer, nothing_is_logged) {
  test::LogCapture const log;
  HParaPrefer::get_eps(line({4}), 1, true);
  HParaPrefer::get_eps({point({0, 0}), point({1})}, -1, false);
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
