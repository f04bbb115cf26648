#include "cluster/HClusterMgr.h"

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"

HClusterMgr* HClusterMgr::pmgr = nullptr;

HClusterMgr::HClusterMgr() = default;
HClusterMgr::~HClusterMgr() = default;

HClusterMgr* HClusterMgr::pins() {
  if (pmgr == nullptr) {
    pmgr = new HClusterMgr;
  }
  return pmgr;
}

void HClusterMgr::cluster(HClusterBase* engine, std::vector<HPointN> const& points,
                          std::vector<std::vector<int>>& result) {
  result.clear();
  if (engine->cluster(points)) {
    engine->get_result(result);
  }
}

void HClusterMgr::cluster_in_place(HClusterBase& engine, std::vector<HPointN> const& points,
                                   std::vector<std::vector<int>>& result) {
  result.clear();
  if (engine.cluster_in_place(points)) {
    engine.get_result(result);
  }
}

void HClusterMgr::canopy(std::vector<HPointN> const& points, double const& T1, double const& T2,
                         std::vector<std::vector<int>>& result) {
  HClusterCanopy engine;
  engine.set_T1(T1);
  engine.set_T2(T2);
  cluster_in_place(engine, points, result);
}

void HClusterMgr::kmeans(std::vector<HPointN> const& points, int const& k,
                         std::vector<std::vector<int>>& result, bool use_canopy) {
  HClusterKMeans engine;
  engine.set_k(k);
  engine.set_use_canopy(use_canopy);
  cluster_in_place(engine, points, result);
}

void HClusterMgr::dbscan(std::vector<HPointN> const& points, double const& eps,
                         int const& min_points, bool const& use_similarity,
                         std::vector<std::vector<int>>& result) {
  HClusterDBScan engine;
  engine.set_eps(eps);
  engine.set_min_ponits(min_points);
  engine.mb_use_similarity = use_similarity;
  cluster_in_place(engine, points, result);
}
