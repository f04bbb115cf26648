#include <limits>

#include <gtest/gtest.h>

#include "cluster/HClusterDBScan.h"
#include "cluster/points.h"

#include "support/log_capture.h"

namespace {

using test::Clusters;
using test::line;
using test::Members;
using test::point;
using test::Points;

class DbScan : public testing::Test {
 protected:
  bool run(Points const& points, double eps, int min_points) {
    engine.set_eps(eps);
    engine.set_min_ponits(min_points);
    return engine.cluster(points);
  }
  bool run_similar(Points const& points, double threshold, int min_points) {
    engine.mb_use_similarity = true;
    engine.set_similarity(threshold);
    engine.set_min_ponits(min_points);
    return engine.cluster(points);
  }
  Clusters result() const {
    Clusters out{{99}};
    engine.get_result(out);
    return out;
  }

  HClusterDBScan engine;
};

TEST_F(DbScan, parameters_are_0_at_first_and_stored_as_set) {
  EXPECT_FALSE(engine.mb_use_similarity);
  EXPECT_FALSE(engine.mb_mark_kernel);
  EXPECT_FALSE(engine.mb_mark_border);
  EXPECT_FALSE(engine.mb_mark_noise);
  EXPECT_EQ(engine.md_eps, 0.0);
  EXPECT_EQ(engine.md_similarity, 0.0);
  EXPECT_EQ(engine.mi_min_points, 0);
  engine.set_eps(1.5);
  engine.set_similarity(0.5);
  engine.set_min_ponits(-3);
  EXPECT_EQ(engine.md_eps, 1.5);
  EXPECT_EQ(engine.md_similarity, 0.5);
  EXPECT_EQ(engine.mi_min_points, -3);
  EXPECT_FALSE(engine.mb_use_similarity);
}

TEST_F(DbScan, with_an_eps_of_0_nothing_is_in_range) {
  EXPECT_FALSE(run(line({1, 1, 1}), 0, 1));
  EXPECT_TRUE(result().empty());
  EXPECT_EQ(engine.vt_noise, (Members{0, 1, 2}));
}

TEST_F(DbScan, without_a_minimum_every_point_is_a_kernel_point) {
  EXPECT_TRUE(run(line({1, 5, 1}), 0, 0));
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  HClusterDBScan other;
  other.set_eps(1);
  other.set_min_ponits(-7);
  EXPECT_TRUE(other.cluster(line({1, 5, 1})));
  EXPECT_EQ(other.vt_result, (Clusters{{0, 2}, {1}}));
}

TEST_F(DbScan, with_a_minimum_of_1_an_isolated_point_is_a_cluster) {
  EXPECT_TRUE(run(line({0, 100, 0.5}), 1, 1));
  EXPECT_EQ(result(), (Clusters{{0, 2}, {1}}));
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1, 2}));
}

TEST_F(DbScan, points_are_kernel_border_or_noise) {
  EXPECT_TRUE(run(line({0, 0.5, 1, 5, 5.5, 9}), 1.1, 3));
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1, 2}));
  EXPECT_TRUE(engine.vt_border.empty());
  EXPECT_EQ(engine.vt_noise, (Members{3, 4, 5}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
}

TEST_F(DbScan, a_run_leaves_its_marks) {
  run(line({0, 1}), 2, 1);
  EXPECT_TRUE(engine.mb_mark_kernel);
  EXPECT_TRUE(engine.mb_mark_border);
  EXPECT_TRUE(engine.mb_mark_noise);
  EXPECT_FALSE(engine.mb_finish);
}

TEST_F(DbScan, a_distance_equal_to_eps_is_out_of_range) {
  EXPECT_TRUE(run(line({0, 2}), 2, 1));
  EXPECT_EQ(result(), (Clusters{{0}, {1}}));
  EXPECT_FALSE(engine.is_less_than_eps(point({0}), point({2})));
  EXPECT_TRUE(engine.is_less_than_eps(point({0}), point({1.9999999999999998})));
}

TEST_F(DbScan, points_of_different_size_are_out_of_range) {
  EXPECT_TRUE(run({point({0}), point({0, 0})}, 9223372036854775808.0, 1));
  EXPECT_EQ(result(), (Clusters{{0}, {1}}));
}

TEST_F(DbScan, an_eps_above_the_sentinel_reaches_points_of_different_size) {
  EXPECT_TRUE(run({point({0}), point({0, 0})}, 1e19, 1));
  EXPECT_EQ(result(), (Clusters{{0, 1}}));
}

TEST_F(DbScan, an_eps_that_is_no_number_reaches_nothing) {
  EXPECT_FALSE(run(line({0, 0}), std::numeric_limits<double>::quiet_NaN(), 1));
}

TEST_F(DbScan, the_accessors_leave_their_argument) {
  run(line({0, 0.5, 1, 5, 5.5, 9}), 1.1, 3);
  Members list{42};
  engine.get_vt_kernel(list);
  engine.get_vt_border(list);
  engine.get_vt_noise(list);
  EXPECT_EQ(list, (Members{42}));
}

TEST_F(DbScan, merging_goes_on_two_behind_and_leaves_a_chain_apart) {
  EXPECT_TRUE(run(line({0, 4, 2, 1, 3}), 1.5, 2));
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1, 2, 3, 4}));
  EXPECT_EQ(result(), (Clusters{{0, 2, 3, 4}, {1, 4}}));
}

TEST_F(DbScan, an_ordered_chain_merges_whole) {
  EXPECT_TRUE(run(line({0, 1, 2, 3}), 1.5, 2));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2, 3}}));
}

TEST_F(DbScan, border_points_go_behind_the_members) {
  // 2 is the only kernel point; 0 and 3 reach it.
  EXPECT_TRUE(run(line({0, 50, 1, 2}), 1.5, 3));
  EXPECT_EQ(engine.vt_kernel, (Members{2}));
  EXPECT_EQ(engine.vt_border, (Members{0, 3}));
  EXPECT_EQ(engine.vt_noise, (Members{1}));
  EXPECT_EQ(result(), (Clusters{{2, 0, 3}}));
}

TEST_F(DbScan, a_border_point_joins_the_first_group_that_reaches_it) {
  // Index 2 lies between the kernel points 0 and 1.
  EXPECT_TRUE(run(line({2, 0, 1, -0.1, -0.2, 2.1, 2.2}), 1.05, 4));
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1}));
  EXPECT_EQ(result(), (Clusters{{0, 2, 5, 6}, {1, 3, 4}}));
}

TEST_F(DbScan, a_border_point_joins_through_a_border_point) {
  // Index 2 has its kernel point, 3, in the second group, and reaches border point 1 of the first.
  EXPECT_TRUE(run(line({0, 1, 1.9, 2.9, -0.1, -0.2, 3, 3.1}), 1.05, 4));
  EXPECT_EQ(engine.vt_kernel, (Members{0, 3}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2, 4, 5}, {3, 6, 7}}));
}

TEST_F(DbScan, similarity_is_above_the_threshold) {
  Points const points{point({1, 0}), point({2, 0}), point({0, 1}), point({1, 1})};
  EXPECT_TRUE(run_similar(points, 0.9, 1));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2}, {3}}));
}

TEST_F(DbScan, a_similarity_equal_to_the_threshold_is_out_of_range) {
  engine.set_similarity(1.0);
  EXPECT_FALSE(engine.is_greater_than_similarity(point({2, 0}), point({2, 0})));
  engine.set_similarity(0.9999999999999999);
  EXPECT_TRUE(engine.is_greater_than_similarity(point({2, 0}), point({2, 0})));
}

TEST_F(DbScan, a_zero_point_is_similar_to_nothing_not_even_itself) {
  EXPECT_TRUE(run_similar({point({0, 0}), point({0, 0}), point({1, 0})}, -5, 1));
  EXPECT_EQ(engine.vt_kernel, (Members{2}));
  EXPECT_EQ(engine.vt_noise, (Members{0, 1}));
}

TEST_F(DbScan, one_dimension_is_similar_to_nothing_by_default) {
  EXPECT_FALSE(run_similar(line({1, 1}), 0, 1));
}

TEST_F(DbScan, a_similarity_of_0_is_above_a_negative_threshold) {
  EXPECT_TRUE(run_similar({point({1}), point({2}), point({1, 1})}, -0.5, 1));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
}

TEST_F(DbScan, in_range_goes_by_the_criterion_of_the_flag) {
  engine.set_eps(1);
  engine.set_similarity(0.5);
  HPointN const a = point({1, 0});
  HPointN const b = point({5, 0});
  EXPECT_FALSE(engine.is_in_range(a, b));
  engine.mb_use_similarity = true;
  EXPECT_TRUE(engine.is_in_range(a, b));
}

TEST_F(DbScan, membership_is_by_value) {
  EXPECT_TRUE(engine.is_in_vt_point(3, {1, 3}));
  EXPECT_FALSE(engine.is_in_vt_point(2, {1, 3}));
  EXPECT_FALSE(engine.is_in_vt_point(2, {}));
}

TEST_F(DbScan, lists_intersect_in_a_common_element) {
  EXPECT_TRUE(engine.is_intersect_between_vt({1, 2}, {3, 2}));
  EXPECT_FALSE(engine.is_intersect_between_vt({1, 2}, {3, 4}));
  EXPECT_FALSE(engine.is_intersect_between_vt({}, {1}));
  EXPECT_FALSE(engine.is_intersect_between_vt({1}, {}));
}

TEST_F(DbScan, a_union_is_ascending_and_without_repeats) {
  Members out{42};
  engine.union_both_vt({5, 1, 5}, {3, 1}, out);
  EXPECT_EQ(out, (Members{1, 3, 5}));
  engine.union_both_vt({}, {}, out);
  EXPECT_TRUE(out.empty());
}

TEST_F(DbScan, a_union_may_replace_its_operands) {
  Members a{5, 1};
  Members b{3, 1};
  engine.union_both_vt(a, b, a);
  EXPECT_EQ(a, (Members{1, 3, 5}));
  engine.union_both_vt(a, b, b);
  EXPECT_EQ(b, (Members{1, 3, 5}));
}

TEST_F(DbScan, kernel_points_are_marked_once) {
  engine.InitBase(line({0, 1, 9}));
  engine.set_eps(2);
  engine.set_min_ponits(2);
  engine.mark_kernel_point();
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1}));
  EXPECT_TRUE(engine.mb_mark_kernel);
  engine.set_eps(100);
  engine.mark_kernel_point();
  EXPECT_EQ(engine.vt_kernel, (Members{0, 1}));
}

TEST_F(DbScan, a_marked_engine_keeps_the_kernel_points_it_was_given) {
  engine.InitBase(line({0, 1, 9}));
  engine.set_eps(2);
  engine.mb_mark_kernel = true;
  engine.vt_kernel = {1};
  engine.mark_border_point();
  EXPECT_EQ(engine.vt_border, (Members{0}));
}

TEST_F(DbScan, marking_border_points_marks_kernel_points_first) {
  engine.InitBase(line({0, 1, 2, 9}));
  engine.set_eps(1.5);
  engine.set_min_ponits(3);
  engine.mark_border_point();
  EXPECT_EQ(engine.vt_kernel, (Members{1}));
  EXPECT_EQ(engine.vt_border, (Members{0, 2}));
  EXPECT_TRUE(engine.mb_mark_border);
  EXPECT_FALSE(engine.mb_mark_noise);
}

TEST_F(DbScan, marking_noise_marks_the_others_first) {
  engine.InitBase(line({0, 1, 2, 9}));
  engine.set_eps(1.5);
  engine.set_min_ponits(3);
  engine.vt_noise = {42};
  engine.mark_noise_point();
  EXPECT_EQ(engine.vt_kernel, (Members{1}));
  EXPECT_EQ(engine.vt_border, (Members{0, 2}));
  EXPECT_EQ(engine.vt_noise, (Members{3}));
  EXPECT_TRUE(engine.mb_mark_noise);
}

TEST_F(DbScan, marking_noise_takes_the_border_points_it_was_given) {
  engine.InitBase(line({0, 1, 2}));
  engine.vt_border = {2};
  engine.mark_noise_point();
  EXPECT_FALSE(engine.mb_mark_kernel);
  EXPECT_EQ(engine.vt_noise, (Members{0, 1}));
}

TEST_F(DbScan, nothing_is_logged) {
  test::LogCapture const log;
  run(line({0, 1}), -1, 5);
  run_similar({point({0, 0})}, 0, 1);
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
