// Engines whose fields a caller, or an engine derived from them, changes between the steps.

#include <limits>

#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HParaPrefer.h"
#include "cluster/points.h"
#include "cluster/update_rule.h"

namespace {

using test::Clusters;
using test::line;

class StretchedCanopy : public HClusterCanopy {
 public:
  bool init() override {
    for (HPointN& point : vt_point) {
      point.vt_data[0] *= 10.0;
    }
    return HClusterCanopy::init();
  }
};

TEST(EnginesByHand, canopies_are_formed_over_what_init_made_of_the_points) {
  StretchedCanopy engine;
  ASSERT_TRUE(engine.HClusterBase::cluster(line({0, 1, 3})));
  EXPECT_EQ(engine.md_T2, 20.0);
}

class GrowingDBScan : public HClusterDBScan {
 public:
  bool init() override {
    vt_point.push_back(HPointN(std::vector<double>{50.0}));
    vt_index.push_back(3);
    mi_count = 4;
    return true;
  }
};

TEST(EnginesByHand, a_point_that_init_adds_is_clustered) {
  GrowingDBScan engine;
  engine.set_eps(1.5);
  engine.set_min_ponits(1);
  ASSERT_TRUE(engine.HClusterBase::cluster(line({0, 1, 2})));
  EXPECT_EQ(engine.vt_result, (Clusters{{0, 1, 2}, {3}}));
}

TEST(EnginesByHand, kernel_points_above_the_count_form_groups) {
  HClusterDBScan engine;
  engine.InitBase(line({0, 1, 2, 3}));
  engine.mi_count = 1;
  engine.md_eps = 1.5;
  engine.vt_kernel = {0, 2};
  engine.mb_mark_kernel = true;
  engine.cluster();
  EXPECT_EQ(engine.vt_result, (Clusters{{0, 1}, {2, 3}}));
}

TEST(EnginesByHand, without_a_count_the_points_are_still_there) {
  HClusterDBScan engine;
  engine.vt_point = line({0, 1});
  engine.vt_index = {0, 1};
  engine.md_eps = 1.5;
  engine.vt_kernel = {0};
  engine.mb_mark_kernel = true;
  engine.cluster();
  EXPECT_EQ(engine.vt_result, (Clusters{{0, 1}}));
}

TEST(EnginesByHand, kernel_points_in_another_order_merge_in_that_order) {
  HClusterDBScan engine;
  engine.InitBase(line({2, 3, 3, 0}));
  engine.md_eps = 0.5;
  engine.vt_kernel = {2, 3, 1};
  engine.mb_mark_kernel = true;
  engine.cluster();
  EXPECT_EQ(engine.vt_result, (Clusters{{1, 2}, {3}}));
}

TEST(EnginesByHand, seeds_come_from_the_index_list) {
  HClusterKMeans engine;
  engine.InitBase(line({0, 1, 10, 11}));
  engine.mi_k = 3;
  engine.vt_index = {0, 2, 3};
  std::vector<HPointN> means;
  ASSERT_TRUE(engine.get_k_means(means));
  EXPECT_EQ(means[2].vt_data, std::vector<double>{10.0});
}

TEST(EnginesByHand, without_a_candidate_there_are_no_more_seeds) {
  HClusterKMeans engine;
  engine.InitBase(line({0, 1, 10, 11}));
  engine.mi_k = 3;
  engine.vt_index = {0, 3};
  std::vector<HPointN> means;
  EXPECT_FALSE(engine.get_k_means(means));
}

TEST(EnginesByHand, means_beyond_k_get_no_point) {
  test::UpdateRule const rule(0);
  HClusterKMeans engine;
  engine.InitBase(line({0, 1, 10, 11}));
  engine.vt_mean = line({0, 11, 50});
  engine.mi_k = 2;
  ASSERT_TRUE(engine.cluster());
  EXPECT_EQ(engine.vt_result, (Clusters{{0, 1}, {2, 3}, {}}));
}

TEST(EnginesByHand, points_beyond_the_count_are_not_assigned) {
  HClusterKMeans engine;
  engine.InitBase(line({0, 1, 2, 9, 10}));
  engine.mi_count = 3;
  engine.vt_mean = line({0, 10});
  engine.mi_k = 2;
  HClusterKMeans::ClusterMap clusters;
  engine.get_mean_cluster(clusters);
  EXPECT_EQ(clusters, (HClusterKMeans::ClusterMap{{0, {0, 1, 2}}, {1, {}}}));
}

TEST(EnginesByHand, points_beyond_the_count_fill_no_empty_cluster) {
  HClusterKMeans engine;
  engine.InitBase(line({0, 1, 2, 9, 30}));
  engine.mi_count = 3;
  HClusterKMeans::ClusterMap clusters{{0, {}}, {1, {0, 1, 4}}};
  engine.trim_mean_cluster(clusters);
  EXPECT_EQ(clusters, (HClusterKMeans::ClusterMap{{0, {0}}, {1, {1, 4}}}));
}

TEST(EnginesByHand, points_beyond_the_count_have_no_distance_to_a_canopy) {
  HClusterCanopy engine;
  engine.InitBase(line({0, 1, 2, 9, 30}));
  engine.mi_count = 3;
  engine.md_T2 = 0.5;
  Clusters canopies;
  engine.start({0, 1, 4}, canopies);
  EXPECT_EQ(canopies, (Clusters{{0, 4}, {1}}));
}

TEST(EnginesByHand, a_limit_that_is_no_number_keeps_all_values) {
  std::vector<double> out;
  HParaPrefer::get_nearest_value({1.0, 2.0}, std::numeric_limits<double>::quiet_NaN(), 1, out);
  EXPECT_EQ(out, (std::vector<double>{1.0, 2.0}));
}

}  // namespace
