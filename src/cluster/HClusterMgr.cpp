#include "cluster/HClusterMgr.h"

#include "cluster/HSparseClusterMgr.h"

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

void HClusterMgr::canopy(std::vector<HPointN> const& points, double const& T1, double const& T2,
                         std::vector<std::vector<int>>& result) {
  HSparseClusterMgr::canopy(HSparsePoints(points), T1, T2, result);
}

void HClusterMgr::kmeans(std::vector<HPointN> const& points, int const& k,
                         std::vector<std::vector<int>>& result, bool use_canopy) {
  HSparseClusterMgr::kmeans(HSparsePoints(points), k, result, use_canopy);
}

void HClusterMgr::dbscan(std::vector<HPointN> const& points, double const& eps,
                         int const& min_points, bool const& use_similarity,
                         std::vector<std::vector<int>>& result) {
  HSparseClusterMgr::dbscan(HSparsePoints(points), eps, min_points, use_similarity, result);
}
