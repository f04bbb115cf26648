#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/HSparseClusterMgr.h"
#include "cluster/random_cases.h"
#include "cluster/update_rule.h"

#include "reference/points.h"
#include "support/log_capture.h"

namespace {

using reference::is_same;
using reference::Matrix;
using reference::RandomMatrix;
using test::for_random_points;
using Clusters = std::vector<std::vector<int>>;

// What an engine finds that keeps a copy of the dense points.
Clusters found_by(HClusterBase& engine, std::vector<HPointN> const& points) {
  Clusters result;
  HClusterMgr::pins()->cluster(&engine, points, result);
  return result;
}

class SparseManager : public testing::Test {
 protected:
  // What an earlier call left.
  Clusters result{{7, 8}, {9}};
};

TEST_F(SparseManager, finds_the_canopies_of_dense_points) {
  for_random_points(25, 40'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    std::vector<HPointN> const points = reference::to_points(rows);
    double const t2 = random.one_in(3) ? 0.0 : random.radius(rows);
    HClusterCanopy engine;
    engine.set_T1(t2);
    engine.set_T2(t2);
    HSparseClusterMgr::canopy(HSparsePoints(points), t2, t2, result);
    EXPECT_EQ(result, found_by(engine, points));
  });
}

TEST_F(SparseManager, finds_the_means_of_dense_points) {
  for_random_points(25, 41'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    test::UpdateRule const rule(random.integer(0, 1));
    std::vector<HPointN> const points = reference::to_points(rows);
    int const k = random.integer(-1, reference::count_of(rows) + 1);
    bool const use_canopy = random.one_in(3);
    HClusterKMeans engine;
    engine.set_k(k);
    engine.set_use_canopy(use_canopy);
    HSparseClusterMgr::kmeans(HSparsePoints(points), k, result, use_canopy);
    EXPECT_EQ(result, found_by(engine, points));
  });
}

TEST_F(SparseManager, finds_the_dense_groups_of_dense_points) {
  for_random_points(25, 42'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    std::vector<HPointN> const points = reference::to_points(rows);
    double const eps = random.radius(rows);
    int const min_points = random.integer(-1, 5);
    bool const use_similarity = random.one_in(3);
    HClusterDBScan engine;
    engine.set_eps(eps);
    engine.set_min_ponits(min_points);
    engine.mb_use_similarity = use_similarity;
    HSparseClusterMgr::dbscan(HSparsePoints(points), eps, min_points, use_similarity, result);
    EXPECT_EQ(result, found_by(engine, points));
  });
}

TEST_F(SparseManager, estimates_the_radius_of_dense_points) {
  for_random_points(25, 43'000'000, [](Matrix const& rows, RandomMatrix& random) {
    std::vector<HPointN> const points = reference::to_points(rows);
    int const min_points = random.integer(0, 5);
    for (bool const use_distance : {true, false}) {
      EXPECT_TRUE(
          is_same(HSparseClusterMgr::get_eps(HSparsePoints(points), min_points, use_distance),
                  HParaPrefer::get_eps(points, min_points, use_distance)));
    }
  });
}

TEST_F(SparseManager, one_run_leaves_nothing_in_the_points_that_another_would_see) {
  for_random_points(10, 44'000'000, [](Matrix const& rows, RandomMatrix& random) {
    HSparsePoints const shared(reference::to_points(rows));
    auto const runs_on = [&rows](HSparsePoints const& points, double eps) {
      std::vector<Clusters> results(3);
      HSparseClusterMgr::canopy(points, eps, eps, results[0]);
      HSparseClusterMgr::kmeans(points, reference::count_of(rows) / 2, results[1], false);
      HSparseClusterMgr::dbscan(points, eps, 2, false, results[2]);
      return results;
    };
    double const eps = random.radius(rows);
    std::vector<Clusters> const first = runs_on(shared, eps);
    EXPECT_EQ(runs_on(shared, eps), first);
    EXPECT_EQ(runs_on(HSparsePoints(reference::to_points(rows)), eps), first);
  });
}

TEST_F(SparseManager, without_points_the_result_is_empty_and_nothing_is_reported) {
  test::LogCapture const log;
  HSparseClusterMgr::canopy(HSparsePoints(), 1.0, 1.0, result);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  HSparseClusterMgr::kmeans(HSparsePoints(), 2, result, true);
  EXPECT_TRUE(result.empty());
  result = {{7}};
  HSparseClusterMgr::dbscan(HSparsePoints(), 1.0, 1, false, result);
  EXPECT_TRUE(result.empty());
  EXPECT_EQ(HSparseClusterMgr::get_eps(HSparsePoints(), 1, true), 0.0);
  EXPECT_TRUE(log.records().empty());
}

TEST_F(SparseManager, logs_what_an_engine_logs) {
  std::vector<HPointN> const points{HPointN({0.0}), HPointN({1.0}), HPointN({9.0})};
  test::LogCapture const log;
  HClusterKMeans engine;
  engine.set_k(3);
  engine.set_use_canopy(true);
  found_by(engine, points);
  auto const expected = log.records();
  HSparseClusterMgr::kmeans(HSparsePoints(points), 3, result, true);
  auto const all = log.records();
  EXPECT_EQ((std::vector<test::LogCapture::Record>(
                all.begin() + static_cast<std::ptrdiff_t>(expected.size()), all.end())),
            expected);
}

}  // namespace
