#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/points.h"

#include "support/log_capture.h"

namespace {

using test::Clusters;
using test::line;
using test::Members;
using test::point;
using test::Points;
using Values = std::vector<double>;

struct Parameters {
  long long k = 0;
  double t1 = 0.0;
  double t2 = 0.0;
};

class Canopy : public testing::Test {
 protected:
  // A run with parameters; the engine stays for a look at its fields.
  bool run(Points const& points, Parameters const& parameters = {}) {
    set(parameters);
    return engine.cluster(points);
  }
  void set(Parameters const& parameters) {
    engine.set_k(parameters.k);
    engine.set_T1(parameters.t1);
    engine.set_T2(parameters.t2);
  }
  Clusters result() const {
    Clusters out{{99}};
    engine.get_result(out);
    return out;
  }

  HClusterCanopy engine;
};

TEST_F(Canopy, parameters_are_0_at_first_and_stored_as_set) {
  EXPECT_EQ(engine.mi_k, 0);
  EXPECT_EQ(engine.md_T1, 0.0);
  EXPECT_EQ(engine.md_T2, 0.0);
  set({-4, -1.5, 2.5});
  EXPECT_EQ(engine.mi_k, -4);
  EXPECT_EQ(engine.md_T1, -1.5);
  EXPECT_EQ(engine.md_T2, 2.5);
}

TEST_F(Canopy, negative_parameters_are_refused) {
  EXPECT_FALSE(run(line({0, 1}), {-1, 0, 0}));
  EXPECT_FALSE(run(line({0, 1}), {0, -1, 0}));
  EXPECT_FALSE(run(line({0, 1}), {0, 3, -1}));
  EXPECT_TRUE(result().empty());
  EXPECT_FALSE(engine.mb_finish);
}

TEST_F(Canopy, a_refused_k_leaves_the_radii) {
  set({-1, 0, 0});
  engine.InitBase(line({0, 2}));
  EXPECT_FALSE(engine.init());
  EXPECT_EQ(engine.md_T2, 0.0);
}

TEST_F(Canopy, t1_below_t2_is_refused) {
  EXPECT_FALSE(run(line({0, 1}), {0, 1, 2}));
  EXPECT_TRUE(result().empty());
}

TEST_F(Canopy, t1_of_0_with_a_positive_t2_is_refused) {
  EXPECT_FALSE(run(line({0, 1}), {0, 0, 1}));
}

TEST_F(Canopy, t1_equal_to_t2_is_accepted) {
  EXPECT_TRUE(run(line({0, 1, 5}), {0, 2, 2}));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2}}));
}

TEST_F(Canopy, t1_has_no_effect_on_the_clusters) {
  for (double const t1 : {2.0, 3.0, 1000.0}) {
    HClusterCanopy other;
    other.set_T1(t1);
    other.set_T2(2);
    EXPECT_TRUE(other.cluster(line({0, 1, 5, 6, 3})));
    EXPECT_EQ(other.vt_result, (Clusters{{0, 1}, {2, 3, 4}}));
    EXPECT_EQ(other.md_T1, t1);
  }
}

TEST_F(Canopy, radii_come_from_the_mean_distance) {
  EXPECT_TRUE(run(line({0, 1, 3})));
  EXPECT_EQ(engine.md_T2, 2.0);
  EXPECT_EQ(engine.md_T1, 6.0);
}

TEST_F(Canopy, a_given_t1_keeps_t2_at_0) {
  EXPECT_TRUE(run(line({0, 1, 0}), {0, 5, 0}));
  EXPECT_EQ(engine.md_T2, 0.0);
  EXPECT_EQ(result(), (Clusters{{0, 2}, {1}}));
}

TEST_F(Canopy, without_k_one_pass_is_the_run) {
  EXPECT_TRUE(run(line({0, 1, 3})));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2}}));
}

TEST_F(Canopy, too_many_clusters_double_t2) {
  EXPECT_TRUE(run(line({0, 1, 3}), {1, 0, 0}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(engine.md_T2, 4.0);
  EXPECT_EQ(engine.md_T1, 6.0);
}

TEST_F(Canopy, too_few_clusters_halve_t2) {
  EXPECT_TRUE(run(line({0, 1, 3}), {3, 0, 0}));
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  EXPECT_EQ(engine.md_T2, 0.5);
}

TEST_F(Canopy, the_wanted_number_at_once_needs_no_search) {
  EXPECT_TRUE(run(line({0, 1, 3}), {2, 0, 0}));
  EXPECT_EQ(engine.md_T2, 2.0);
}

TEST_F(Canopy, search_works_from_given_radii) {
  EXPECT_TRUE(run(line({0, 1, 3}), {2, 100, 32}));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2}}));
  EXPECT_EQ(engine.md_T2, 2.0);
  EXPECT_EQ(engine.md_T1, 100.0);
}

TEST_F(Canopy, search_is_refused_with_a_t2_of_0) {
  EXPECT_TRUE(run(line({0, 1, 3}), {1, 100, 0}));
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  EXPECT_EQ(engine.md_T2, 0.0);
  EXPECT_TRUE(engine.mb_finish);
}

TEST_F(Canopy, identical_points_are_one_cluster) {
  EXPECT_TRUE(run(line({4, 4, 4})));
  EXPECT_EQ(engine.md_T1, 0.0);
  EXPECT_EQ(engine.md_T2, 0.0);
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
}

TEST_F(Canopy, identical_points_cannot_be_divided) {
  EXPECT_TRUE(run(line({4, 4, 4}), {2, 0, 0}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(engine.md_T2, 0.0);
}

TEST_F(Canopy, a_single_point_is_a_cluster) {
  EXPECT_TRUE(run(line({4})));
  EXPECT_EQ(engine.md_T1, 0.0);
  EXPECT_EQ(engine.md_T2, 0.0);
  EXPECT_EQ(result(), (Clusters{{0}}));
}

TEST_F(Canopy, k_above_the_points_gives_the_distinct_ones) {
  EXPECT_TRUE(run(line({0, 1, 0, 3}), {9, 0, 0}));
  EXPECT_EQ(result(), (Clusters{{0, 2}, {1}, {3}}));
  EXPECT_LT(engine.md_T2, 1e-6);
  EXPECT_GE(engine.md_T2, 0.5e-6);
}

// Corners at equal distances: no T2 gives two clusters.
Points triangle(double size) {
  return {point({size, 0, 0}), point({0, size, 0}), point({0, 0, size})};
}

TEST_F(Canopy, a_k_that_no_t2_gives_ends_with_the_last_pass) {
  EXPECT_TRUE(run(triangle(1), {2, 0, 0}));
  EXPECT_TRUE(engine.mb_finish);
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  EXPECT_EQ(engine.md_T2, std::nextafter(engine.get_distance(0, 1), 0.0));
}

TEST_F(Canopy, a_search_can_stop_right_on_a_distance) {
  EXPECT_TRUE(run(triangle(5), {2, 50, 40}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(engine.md_T2, engine.get_distance(0, 1));
}

TEST_F(Canopy, search_ends_where_no_t2_is_large_enough) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(run(line({0, nan, 2}), {1, 5, 5}));
  EXPECT_EQ(result(), (Clusters{{0, 2}, {1}}));
  EXPECT_EQ(engine.md_T2, infinity);
}

TEST_F(Canopy, search_ends_with_a_t2_that_is_no_number) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(run(line({0, nan, 2}), {1, 0, 0}));
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  EXPECT_TRUE(std::isnan(engine.md_T2));
}

TEST_F(Canopy, a_distance_equal_to_t2_joins) {
  EXPECT_TRUE(run(line({0, 2, -2, 2.0000000000000004}), {0, 2, 2}));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}, {3}}));
}

TEST_F(Canopy, seeds_and_members_come_in_list_order) {
  EXPECT_TRUE(run(line({5, 9, 4, 8, 6, 0}), {0, 1.5, 1.5}));
  EXPECT_EQ(result(), (Clusters{{0, 2, 4}, {1, 3}, {5}}));
}

TEST_F(Canopy, a_run_delivers_the_means) {
  EXPECT_TRUE(run(line({0, 1, 3})));
  EXPECT_TRUE(engine.mb_finish);
  Points means{point({7})};
  engine.get_out_center_point(means);
  EXPECT_EQ(test::values_of(means), (Values{0.5, 3}));
}

TEST_F(Canopy, a_run_on_no_points_fails) {
  EXPECT_FALSE(run({}));
  EXPECT_FALSE(engine.mb_finish);
}

TEST_F(Canopy, a_pass_replaces_the_clusters_and_works_on_the_list_it_gets) {
  engine.InitBase(line({0, 1, 2, 3, 4}));
  engine.md_T2 = 1;
  Clusters canopies{{42}};
  engine.start({4, 0, 3, 1}, canopies);
  EXPECT_EQ(canopies, (Clusters{{4, 3}, {0, 1}}));
  engine.start({}, canopies);
  EXPECT_TRUE(canopies.empty());
  EXPECT_TRUE(engine.vt_result.empty());
}

TEST_F(Canopy, an_index_outside_the_points_is_at_distance_0) {
  engine.InitBase(line({0, 10}));
  engine.md_T2 = 1;
  Clusters canopies;
  engine.start({0, 7, 1, -1}, canopies);
  EXPECT_EQ(canopies, (Clusters{{0, 7, -1}, {1}}));
  engine.start({7, 0, 1}, canopies);
  EXPECT_EQ(canopies, (Clusters{{7, 0, 1}}));
}

TEST_F(Canopy, a_seed_out_of_its_own_reach_takes_one_repeat_of_itself_away) {
  engine.InitBase(line({std::numeric_limits<double>::quiet_NaN(), 1}));
  engine.md_T2 = 1;
  Clusters canopies;
  engine.start({0, 0, 0, 1, 1}, canopies);
  EXPECT_EQ(canopies, (Clusters{{0}, {0}, {1, 1}}));
}

TEST_F(Canopy, what_is_near_moves_behind_the_canopy) {
  engine.InitBase(line({0, 1, 2, 3}));
  engine.md_T2 = 1;
  Members remaining{3, 2, 1};
  Members canopy{0};
  engine.get_vt_less_t2(0, remaining, canopy);
  EXPECT_EQ(remaining, (Members{3, 2}));
  EXPECT_EQ(canopy, (Members{0, 1}));
}

TEST_F(Canopy, what_the_canopy_holds_leaves_the_rest) {
  engine.InitBase(line({0, 10, 20, 30}));
  engine.md_T2 = 1;
  Members remaining{3, 2, 2, 1};
  Members canopy{2, 0};
  engine.get_vt_less_t2(0, remaining, canopy);
  EXPECT_EQ(remaining, (Members{3, 2, 1}));
  EXPECT_EQ(canopy, (Members{2, 0}));
}

TEST_F(Canopy, search_without_a_radius_changes_nothing) {
  engine.InitBase(line({0, 1}));
  engine.vt_result = {{0}, {1}};
  engine.mi_k = 1;
  engine.md_T2 = 1;
  EXPECT_FALSE(engine.cluster_k({0, 1}));
  engine.md_T1 = 1;
  engine.md_T2 = 0;
  EXPECT_FALSE(engine.cluster_k({0, 1}));
  EXPECT_EQ(engine.vt_result, (Clusters{{0}, {1}}));
  EXPECT_EQ(engine.md_T2, 0.0);
}

TEST_F(Canopy, search_that_has_its_number_makes_no_pass) {
  engine.InitBase(line({0, 1}));
  set({3, 4, 2});
  engine.vt_result = {{8}, {}, {9}};
  EXPECT_TRUE(engine.cluster_k({0, 1}));
  EXPECT_EQ(engine.vt_result, (Clusters{{8}, {}, {9}}));
  EXPECT_EQ(engine.md_T2, 2.0);
}

TEST_F(Canopy, search_ends_after_a_pass_below_the_lower_bound) {
  engine.InitBase(line({0, 1}));
  set({1, 4, 1e-8});
  engine.vt_result = {{0}, {1}};
  EXPECT_TRUE(engine.cluster_k({0, 1}));
  EXPECT_EQ(engine.md_T2, 2e-8);
  EXPECT_EQ(engine.vt_result, (Clusters{{0}, {1}}));
}

TEST_F(Canopy, a_step_up_doubles_until_there_is_an_upper_end) {
  double low = 7;
  double high = 0;
  engine.md_T2 = 3;
  engine.increase_t2(low, high);
  EXPECT_EQ(low, 3.0);
  EXPECT_EQ(high, 0.0);
  EXPECT_EQ(engine.md_T2, 6.0);
  high = 10;
  engine.increase_t2(low, high);
  EXPECT_EQ(low, 6.0);
  EXPECT_EQ(high, 10.0);
  EXPECT_EQ(engine.md_T2, 8.0);
}

TEST_F(Canopy, a_step_down_halves_the_way_to_the_lower_end) {
  double low = 0;
  double high = 7;
  engine.md_T2 = 4;
  engine.decrease_t2(low, high);
  EXPECT_EQ(low, 0.0);
  EXPECT_EQ(high, 4.0);
  EXPECT_EQ(engine.md_T2, 2.0);
  low = 1;
  engine.decrease_t2(low, high);
  EXPECT_EQ(high, 2.0);
  EXPECT_EQ(engine.md_T2, 1.5);
}

TEST_F(Canopy, nothing_is_logged) {
  test::LogCapture const log;
  run(line({0, 1, 3}), {9, 0, 0});
  run(line({0, 1, 3}), {-9, 0, 0});
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
