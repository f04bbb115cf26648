#include <type_traits>

#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/points.h"
#include "cluster/update_rule.h"

#include "support/log_capture.h"

namespace {

using test::Clusters;
using test::line;
using test::point;
using test::Points;

class Manager : public testing::Test {
 protected:
  HClusterMgr manager;
  // What an earlier call left.
  Clusters result{{7, 8}, {9}};
};

TEST_F(Manager, is_one_instance) {
  HClusterMgr* const first = HClusterMgr::pins();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(HClusterMgr::pins(), first);
  EXPECT_EQ(HClusterMgr::pmgr, first);
  EXPECT_TRUE(std::is_empty_v<HClusterMgr>);
}

TEST_F(Manager, runs_an_engine_that_the_caller_set_up) {
  HClusterCanopy engine;
  engine.set_k(3);
  manager.cluster(&engine, line({0, 1, 3}), result);
  EXPECT_EQ(result, (Clusters{{0}, {1}, {2}}));
  EXPECT_EQ(engine.vt_result, result);
  EXPECT_EQ(engine.vt_point.size(), 3U);
  EXPECT_EQ(engine.md_T2, 0.5);
}

TEST_F(Manager, a_failed_run_of_an_engine_empties_the_result) {
  HClusterKMeans engine;
  engine.set_k(-1);
  manager.cluster(&engine, line({0, 1}), result);
  EXPECT_TRUE(result.empty());
}

TEST_F(Manager, no_points_empty_the_result_and_report_nothing) {
  test::LogCapture const log;
  HClusterCanopy engine;
  manager.cluster(&engine, {}, result);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  manager.canopy({}, 0, 0, result);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  manager.kmeans({}, 2, result, true);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  manager.dbscan({}, 1, 1, false, result);
  EXPECT_TRUE(result.empty());
  EXPECT_TRUE(log.records().empty());
}

TEST_F(Manager, canopy_takes_the_radii) {
  manager.canopy(line({0, 1, 3, 9}), 2, 2, result);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}, {3}}));
}

TEST_F(Manager, canopy_searches_for_no_number) {
  manager.canopy(line({0, 1, 3}), 0, 0, result);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
}

TEST_F(Manager, refused_radii_empty_the_result) {
  manager.canopy(line({0, 1, 3}), 1, 2, result);
  EXPECT_TRUE(result.empty());
}

TEST_F(Manager, kmeans_takes_k_and_the_seeding) {
  test::UpdateRule const means(0);
  manager.kmeans(line({0, 0, 5, 10, 11}), 3, result, false);
  EXPECT_EQ(result, (Clusters{{2}, {3, 4}, {0, 1}}));
  manager.kmeans(line({0, 1, 3}), 0, result, true);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
}

TEST_F(Manager, kmeans_delivers_empty_clusters) {
  test::UpdateRule const means(0);
  manager.kmeans(line({0, 0, 0, 10}), 3, result, false);
  EXPECT_EQ(result, (Clusters{{}, {3}, {0, 1, 2}}));
}

TEST_F(Manager, refused_k_empties_the_result) {
  manager.kmeans(line({0, 1}), -1, result, false);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  manager.kmeans(line({0, 1}), 0, result, false);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  manager.kmeans(line({4, 4}), 2, result, false);
  EXPECT_TRUE(result.empty());
}

TEST_F(Manager, kmeans_tells_of_too_few_canopies) {
  test::LogCapture const log;
  manager.kmeans(line({4, 4, 4}), 3, result, true);
  EXPECT_EQ(result, (Clusters{{0, 1, 2}}));
  EXPECT_EQ(log.records(),
            (std::vector<test::LogCapture::Record>{
                {2, L"../HClusterKMeans", L"Not enough to be divided to 3 class."}}));
}

TEST_F(Manager, kmeans_reads_the_update_rule) {
  test::UpdateRule const none(5);
  test::LogCapture const log;
  manager.kmeans(line({0, 1, 10}), 2, result, false);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
  EXPECT_EQ(
      log.records(),
      (std::vector<test::LogCapture::Record>{{1, L"../HClusterKMeans", L"gi_K_ClusterType:5"}}));
}

TEST_F(Manager, dbscan_takes_eps_and_minimum) {
  manager.dbscan(line({0, 0.5, 1, 5, 5.5, 9}), 1.1, 3, false, result);
  EXPECT_EQ(result, (Clusters{{0, 1, 2}}));
  manager.dbscan(line({0, 4, 2, 1, 3}), 1.5, 2, false, result);
  EXPECT_EQ(result, (Clusters{{0, 2, 3, 4}, {1, 4}}));
}

TEST_F(Manager, dbscan_without_clusters_empties_the_result) {
  manager.dbscan(line({0, 1}), 0, 1, false, result);
  EXPECT_TRUE(result.empty());
}

TEST_F(Manager, dbscan_by_similarity_takes_any_positive_cosine) {
  Points const points{point({1, 0}), point({1, 1000}), point({-1, 0}), point({0, 1})};
  for (double const eps : {0.0, -1.0, 1e300}) {
    manager.dbscan(points, eps, 1, true, result);
    EXPECT_EQ(result, (Clusters{{0, 1, 3}, {2}})) << eps;
  }
}

TEST_F(Manager, a_point_counts_by_the_coordinates_it_has) {
  // A file may state another number; the copy that a run works on goes by the data.
  Points points = line({0, 1, 10});
  points[1].n = 7;
  points[2].n = 0;
  manager.dbscan(points, 2, 1, false, result);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
  manager.canopy(points, 2, 2, result);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
  manager.kmeans(points, 2, result, false);
  EXPECT_EQ(result, (Clusters{{0, 1}, {2}}));
}

TEST_F(Manager, leaves_the_points_as_they_are) {
  Points points = line({0, 1, 10});
  points[1].str_label = L"one";
  Points const before = points;
  manager.kmeans(points, 2, result, true);
  manager.dbscan(points, 2, 1, false, result);
  manager.canopy(points, 0, 0, result);
  EXPECT_EQ(test::values_of(points), test::values_of(before));
  EXPECT_EQ(points[1].str_label, HString(L"one"));
}

}  // namespace
