#include <gtest/gtest.h>

#include "cluster/HClusterKMeans.h"
#include "cluster/points.h"
#include "cluster/update_rule.h"

#include "support/log_capture.h"

namespace {

using test::Clusters;
using test::line;
using test::Members;
using test::point;
using test::Points;
using test::UpdateRule;
using Map = std::map<int, Members>;
using Record = test::LogCapture::Record;
using Values = std::vector<double>;

class KMeans : public testing::Test {
 protected:
  bool run(Points const& points, int k, bool use_canopy = false) {
    engine.set_k(k);
    engine.set_use_canopy(use_canopy);
    return engine.cluster(points);
  }
  Clusters result() const {
    Clusters out{{99}};
    engine.get_result(out);
    return out;
  }
  // Points and means set by hand.
  void prepare(Points const& points, Points const& means) {
    engine.InitBase(points);
    engine.vt_mean = means;
    engine.mi_k = static_cast<long long>(means.size());
  }

  UpdateRule rule{0};
  HClusterKMeans engine;
};

TEST(UpdateRuleAtLoad, is_medians) {
  EXPECT_EQ(gi_K_ClusterType, 1);
}

TEST_F(KMeans, parameters_are_0_at_first_and_stored_as_set) {
  EXPECT_EQ(engine.mi_k, 0);
  EXPECT_FALSE(engine.mb_use_canopy);
  EXPECT_TRUE(engine.vt_mean.empty());
  engine.set_k(-3);
  engine.set_use_canopy(true);
  EXPECT_EQ(engine.mi_k, -3);
  EXPECT_TRUE(engine.mb_use_canopy);
}

TEST_F(KMeans, a_negative_k_is_refused) {
  EXPECT_FALSE(run(line({0, 1}), -1));
  EXPECT_FALSE(run(line({0, 1}), -1, true));
  EXPECT_TRUE(result().empty());
}

TEST_F(KMeans, a_k_of_1_is_one_cluster_of_all) {
  EXPECT_TRUE(run(line({5, 0, 100}), 1));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{35}));
}

TEST_F(KMeans, a_k_of_1_makes_no_canopies) {
  EXPECT_TRUE(run(line({5, 0, 100}), 1, true));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(engine.mi_k, 1);
}

TEST_F(KMeans, a_k_of_1_works_on_identical_points) {
  EXPECT_TRUE(run(line({4, 4}), 1));
  EXPECT_EQ(result(), (Clusters{{0, 1}}));
}

TEST_F(KMeans, k_above_the_points_falls_to_their_number) {
  test::LogCapture const log;
  EXPECT_TRUE(run(line({7, 0, 3}), 5));
  EXPECT_EQ(engine.mi_k, 3);
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
  EXPECT_TRUE(log.records().empty());
}

TEST_F(KMeans, k_above_the_points_starts_from_the_points_themselves) {
  Points points = line({7, 0});
  points[0].str_label = L"seven";
  engine.set_k(5);
  engine.InitBase(points);
  EXPECT_TRUE(engine.init());
  ASSERT_EQ(engine.vt_mean.size(), 2U);
  EXPECT_EQ(engine.vt_mean[0].str_label, HString(L"seven"));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{7, 0}));
}

TEST_F(KMeans, k_above_identical_points_leaves_empty_clusters) {
  EXPECT_TRUE(run(line({4, 4}), 9));
  EXPECT_EQ(result(), (Clusters{{}, {0, 1}}));
}

TEST_F(KMeans, a_k_of_0_with_canopy_takes_the_canopies_number) {
  EXPECT_TRUE(run(line({0, 1, 3}), 0, true));
  EXPECT_EQ(engine.mi_k, 2);
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2}}));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{0.5, 3}));
}

TEST_F(KMeans, a_k_of_0_without_canopy_is_refused) {
  test::LogCapture const log;
  EXPECT_FALSE(run(line({0, 1, 3}), 0));
  EXPECT_TRUE(result().empty());
  EXPECT_TRUE(log.records().empty());
}

TEST_F(KMeans, canopies_are_searched_for_k) {
  EXPECT_TRUE(run(line({0, 1, 3}), 3, true));
  EXPECT_EQ(result(), (Clusters{{0}, {1}, {2}}));
}

TEST_F(KMeans, too_few_canopies_lower_k_and_are_told_of) {
  test::LogCapture const log;
  EXPECT_TRUE(run(line({4, 4, 4}), 2, true));
  EXPECT_EQ(engine.mi_k, 1);
  EXPECT_EQ(result(), (Clusters{{0, 1, 2}}));
  EXPECT_EQ(
      log.records(),
      (std::vector<Record>{{2, L"../HClusterKMeans", L"Not enough to be divided to 2 class."}}));
}

TEST_F(KMeans, too_many_canopies_end_the_run) {
  // Equal distances, so that no radius gives two; the search stops on three.
  test::LogCapture const log;
  EXPECT_FALSE(run({point({1, 0, 0}), point({0, 1, 0}), point({0, 0, 1})}, 2, true));
  EXPECT_EQ(engine.vt_mean.size(), 3U);
  EXPECT_EQ(engine.mi_k, 2);
  EXPECT_TRUE(result().empty());
  EXPECT_TRUE(log.records().empty());
}

TEST_F(KMeans, seeds_are_the_farthest_points) {
  engine.set_k(2);
  engine.InitBase(line({0, 1, 10, 11}));
  EXPECT_TRUE(engine.init());
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{0, 11}));
}

TEST_F(KMeans, two_groups_are_told_apart) {
  EXPECT_TRUE(run(line({0, 1, 10, 11}), 2));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2, 3}}));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{0.5, 10.5}));
}

TEST_F(KMeans, the_next_seed_has_the_greatest_sum_of_distances) {
  engine.InitBase({point({0, 0}), point({10, 0}), point({5, 1}), point({5, 3}), point({5, -3})});
  engine.mi_k = 4;
  Points means{point({77, 7})};
  EXPECT_TRUE(engine.get_k_means(means));
  ASSERT_EQ(means.size(), 5U);
  EXPECT_EQ(means[0].vt_data, (Values{77, 7}));
  EXPECT_EQ(means[1].vt_data, (Values{0, 0}));
  EXPECT_EQ(means[2].vt_data, (Values{10, 0}));
  EXPECT_EQ(means[3].vt_data, (Values{5, 3}));
  EXPECT_EQ(means[4].vt_data, (Values{5, -3}));
}

TEST_F(KMeans, seeds_keep_their_labels) {
  Points points = line({0, 5, 9});
  points[2].str_label = L"nine";
  engine.InitBase(points);
  engine.mi_k = 2;
  Points means;
  EXPECT_TRUE(engine.get_k_means(means));
  EXPECT_EQ(means.at(1).str_label, HString(L"nine"));
}

TEST_F(KMeans, more_seeds_than_points_give_none) {
  engine.InitBase(line({0, 5}));
  engine.mi_k = 3;
  Points means{point({7})};
  EXPECT_FALSE(engine.get_k_means(means));
  EXPECT_EQ(test::values_of(means), (Values{7}));
}

TEST_F(KMeans, identical_points_give_no_seeds) {
  test::LogCapture const log;
  EXPECT_FALSE(run(line({4, 4, 4}), 2));
  EXPECT_TRUE(result().empty());
  EXPECT_TRUE(log.records().empty());
}

TEST_F(KMeans, the_farthest_candidate_is_the_first_of_equals) {
  engine.InitBase(line({0, 5, -5, 5, 1}));
  EXPECT_EQ(engine.get_max_distance_index({0}, {4, 3, 2, 1}), 3);
  EXPECT_EQ(engine.get_max_distance_index({0, 2}, {4, 3, 1}), 3);
}

TEST_F(KMeans, there_is_no_farthest_candidate_without_a_distance) {
  engine.InitBase(line({0, 0, 5}));
  EXPECT_EQ(engine.get_max_distance_index({0}, {}), -1);
  EXPECT_EQ(engine.get_max_distance_index({0}, {0, 1}), -1);
  EXPECT_EQ(engine.get_max_distance_index({}, {2}), -1);
}

TEST_F(KMeans, of_equally_near_means_the_later_gets_the_point) {
  prepare(line({1, 0}), line({0, 2, 2}));
  EXPECT_EQ(engine.get_mean_nearest_index(0), 2);
  EXPECT_EQ(engine.get_mean_nearest_index(1), 0);
}

TEST_F(KMeans, without_means_the_nearest_is_0) {
  engine.InitBase(line({1}));
  EXPECT_EQ(engine.get_mean_nearest_index(0), 0);
  engine.mi_k = -1;
  EXPECT_EQ(engine.get_mean_nearest_index(0), 0);
}

TEST_F(KMeans, a_mean_without_coordinates_attracts_nothing) {
  prepare(line({1}), {point({50}), point({})});
  EXPECT_EQ(engine.get_mean_nearest_index(0), 0);
  engine.vt_mean = {point({}), point({})};
  EXPECT_EQ(engine.get_mean_nearest_index(0), 1);
}

TEST_F(KMeans, a_mean_beyond_the_sentinel_attracts_nothing) {
  prepare(line({0}), line({5, 1e19}));
  EXPECT_EQ(engine.get_mean_nearest_index(0), 0);
  engine.vt_mean = line({1e19, 1e20});
  EXPECT_EQ(engine.get_mean_nearest_index(0), 0);
}

TEST_F(KMeans, only_the_first_k_means_take_part) {
  prepare(line({0, 9}), line({1, 2, 9}));
  engine.mi_k = 2;
  EXPECT_EQ(engine.get_mean_nearest_index(1), 1);
  Map clusters;
  engine.get_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {0}}, {1, {1}}, {2, {}}}));
}

TEST_F(KMeans, every_mean_has_its_list) {
  prepare(line({9, 0, 8, 1}), line({0, 100, 10}));
  Map clusters{{7, {7}}};
  engine.get_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {1, 3}}, {1, {}}, {2, {0, 2}}}));
}

TEST_F(KMeans, the_assignment_follows_means_that_are_changed_by_hand) {
  prepare(line({0, 4, 9}), line({0, 9}));
  Map clusters;
  engine.get_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {0, 1}}, {1, {2}}}));
  engine.vt_mean[1] = point({5});
  engine.get_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {0}}, {1, {1, 2}}}));
  EXPECT_EQ(engine.get_mean_nearest_index(1), 1);
}

TEST_F(KMeans, an_empty_list_is_noticed) {
  EXPECT_TRUE(engine.is_exist_empty_cluster({{0, {1}}, {1, {}}}));
  EXPECT_FALSE(engine.is_exist_empty_cluster({{0, {1}}, {1, {0}}}));
  EXPECT_FALSE(engine.is_exist_empty_cluster({}));
}

TEST_F(KMeans, means_move_to_the_arithmetic_mean) {
  engine.InitBase(line({0, 1, 5, 9}));
  Points means = line({7, 8, 9});
  means[0].str_label = L"old";
  engine.update_mean({{0, {0, 1, 2}}, {2, {}}}, means);
  EXPECT_EQ(means[0].vt_data, (Values{2}));
  EXPECT_TRUE(means[0].str_label.empty());
  EXPECT_EQ(means[1].vt_data, (Values{8}));
  EXPECT_TRUE(means[2].vt_data.empty());
  EXPECT_EQ(means[2].n, 0);
}

TEST_F(KMeans, medians_move_to_the_upper_neighbour) {
  engine.InitBase(line({1, 2, 3, 4}));
  Points means = line({7, 8, 9});
  means[0].str_label = L"old";
  engine.update_mean_kmedians({{0, {0, 1, 2, 3}}, {1, {0, 1}}, {2, {}}}, means);
  EXPECT_EQ(means[0].vt_data, (Values{3.5}));
  EXPECT_TRUE(means[0].str_label.empty());
  EXPECT_EQ(means[1].vt_data, (Values{2}));
  EXPECT_EQ(means[2].n, 0);
}

TEST_F(KMeans, a_key_without_a_mean_is_passed_over) {
  engine.InitBase(line({1, 2}));
  Points means = line({7});
  engine.update_mean({{-1, {0}}, {1, {1}}}, means);
  engine.update_mean_kmedians({{-1, {0}}, {1, {1}}}, means);
  EXPECT_EQ(test::values_of(means), (Values{7}));
}

TEST_F(KMeans, distances_are_taken_to_the_members_center) {
  engine.InitBase(line({0, 4, 11, 50}));
  std::map<int, double> distances{{3, 77.0}, {1, 99.0}};
  EXPECT_EQ(engine.get_mean_farest_index({0, 1, 2}, distances), 2);
  EXPECT_EQ(distances, (std::map<int, double>{{0, 5.0}, {1, 1.0}, {2, 6.0}, {3, 77.0}}));
}

TEST_F(KMeans, the_farthest_member_is_the_first_of_equals) {
  engine.InitBase(line({0, 2}));
  std::map<int, double> distances;
  EXPECT_EQ(engine.get_mean_farest_index({1, 0}, distances), 1);
}

TEST_F(KMeans, without_a_distance_the_farthest_member_is_0) {
  engine.InitBase(line({0, 2, 2}));
  std::map<int, double> distances;
  EXPECT_EQ(engine.get_mean_farest_index({1, 2}, distances), 0);
  EXPECT_EQ(engine.get_mean_farest_index({}, distances), 0);
  EXPECT_EQ(engine.get_mean_farest_index({-1, 3}, distances), 0);
  EXPECT_EQ(distances, (std::map<int, double>{{1, 0.0}, {2, 0.0}}));
}

TEST_F(KMeans, the_farthest_points_fill_empty_clusters_in_key_order) {
  engine.InitBase(line({0, 0, 6, 10, 10, 10, 18}));
  Map clusters{{0, {}}, {1, {0, 1, 2}}, {2, {}}, {3, {3, 4, 5, 6}}};
  engine.trim_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {6}}, {1, {0, 1}}, {2, {2}}, {3, {3, 4, 5}}}));
}

TEST_F(KMeans, of_equally_far_points_the_first_fills) {
  engine.InitBase(line({0, 2, 10, 12}));
  Map clusters{{0, {2, 3}}, {1, {0, 1}}, {2, {}}};
  engine.trim_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {2, 3}}, {1, {1}}, {2, {0}}}));
}

TEST_F(KMeans, points_at_their_center_fill_nothing) {
  engine.InitBase(line({0, 0, 3, 5}));
  Map clusters{{0, {}}, {1, {0, 1}}, {2, {}}, {3, {2, 3}}, {4, {}}};
  engine.trim_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {2}}, {1, {0, 1}}, {2, {3}}, {3, {}}, {4, {}}}));
}

TEST_F(KMeans, a_repair_without_empty_clusters_changes_nothing) {
  engine.InitBase(line({0, 1, 5}));
  Map clusters{{0, {0, 2}}, {1, {1}}};
  engine.trim_mean_cluster(clusters);
  EXPECT_EQ(clusters, (Map{{0, {0, 2}}, {1, {1}}}));
}

TEST_F(KMeans, an_empty_cluster_receives_the_farthest_point) {
  EXPECT_TRUE(run(line({0, 0, 5, 10, 11}), 3));
  EXPECT_EQ(result(), (Clusters{{2}, {3, 4}, {0, 1}}));
}

TEST_F(KMeans, a_cluster_that_cannot_be_filled_stays_empty) {
  EXPECT_TRUE(run(line({0, 0, 0, 10}), 3));
  EXPECT_EQ(result(), (Clusters{{}, {3}, {0, 1, 2}}));
}

TEST_F(KMeans, means_of_the_result_are_arithmetic_or_medians) {
  EXPECT_TRUE(run(line({0, 1, 2, 9, 100}), 2));
  EXPECT_EQ(result(), (Clusters{{0, 1, 2, 3}, {4}}));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{3, 100}));
  UpdateRule const medians(1);
  HClusterKMeans other;
  other.set_k(2);
  EXPECT_TRUE(other.cluster(line({0, 1, 2, 9, 100})));
  EXPECT_EQ(other.vt_result, (Clusters{{0, 1, 2, 3}, {4}}));
  EXPECT_EQ(test::values_of(other.vt_mean), (Values{5.5, 100}));
}

TEST_F(KMeans, means_that_moved_lose_their_labels) {
  Points points = line({0, 1, 10});
  points[0].str_label = L"label";
  EXPECT_TRUE(run(points, 2));
  EXPECT_TRUE(engine.vt_mean[0].str_label.empty());
}

TEST_F(KMeans, another_rule_logs_and_leaves_the_seeds) {
  UpdateRule const none(2);
  Points points = line({0, 1, 10, 11});
  points[3].str_label = L"last";
  test::LogCapture const log;
  EXPECT_TRUE(run(points, 2));
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2, 3}}));
  EXPECT_EQ(test::values_of(engine.vt_mean), (Values{0, 11}));
  EXPECT_EQ(engine.vt_mean[1].str_label, HString(L"last"));
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, L"../HClusterKMeans", L"gi_K_ClusterType:2"}}));
}

TEST_F(KMeans, another_rule_logs_in_each_iteration) {
  UpdateRule const none(-7);
  test::LogCapture const log;
  // First assignment, its repair without effect, and the same again, which ends the run.
  EXPECT_TRUE(run(line({0, 0, 0, 10}), 3));
  EXPECT_EQ(result(), (Clusters{{}, {3}, {0, 1, 2}}));
  Record const line_of_log{1, L"../HClusterKMeans", L"gi_K_ClusterType:-7"};
  EXPECT_EQ(log.records(), (std::vector<Record>{line_of_log, line_of_log}));
}

TEST_F(KMeans, medians_that_cycle_end_after_1000_iterations) {
  // Point 2 changes sides for ever: at odd iterations it is in the second cluster.
  UpdateRule const medians(1);
  EXPECT_TRUE(run(line({0, 4, 2, 1, 0, 0}), 2));
  EXPECT_EQ(result(), (Clusters{{0, 2, 3, 4, 5}, {1}}));
}

TEST_F(KMeans, a_run_by_steps_is_a_run) {
  engine.set_k(2);
  engine.InitBase(line({0, 1, 10, 11}));
  EXPECT_TRUE(engine.init());
  EXPECT_TRUE(static_cast<HClusterBase&>(engine).cluster());
  EXPECT_EQ(result(), (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(KMeans, iterations_without_means_find_nothing) {
  engine.InitBase(line({0, 1}));
  Map clusters;
  engine.update_mean(clusters, engine.vt_mean);
  EXPECT_TRUE(engine.vt_mean.empty());
}

TEST_F(KMeans, a_copy_of_an_engine_stands_alone) {
  EXPECT_TRUE(run(line({0, 1, 10, 11}), 2));
  HClusterKMeans copy = engine;
  copy.vt_mean[0] = point({10});
  EXPECT_EQ(copy.get_mean_nearest_index(1), 0);
  EXPECT_EQ(copy.get_mean_nearest_index(2), 0);
  EXPECT_EQ(engine.get_mean_nearest_index(2), 1);
  EXPECT_EQ(copy.vt_result, engine.vt_result);
}

TEST_F(KMeans, a_usual_run_logs_nothing) {
  test::LogCapture const log;
  run(line({0, 1, 10, 11}), 3);
  HClusterKMeans other;
  other.set_k(2);
  other.set_use_canopy(true);
  other.cluster(line({0, 1, 3}));
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
