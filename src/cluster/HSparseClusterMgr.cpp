#include "cluster/HSparseClusterMgr.h"

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HParaPrefer.h"

HSparseClusterMgr::HSparseClusterMgr() = default;
HSparseClusterMgr::~HSparseClusterMgr() = default;

void HSparseClusterMgr::cluster(HClusterBase& engine, HSparsePoints const& points,
                                std::vector<std::vector<int>>& result) {
  result.clear();
  if (!points.empty() && engine.cluster_in_place(points.table())) {
    engine.get_result(result);
  }
}

void HSparseClusterMgr::canopy(HSparsePoints const& points, double const& T1, double const& T2,
                               std::vector<std::vector<int>>& result) {
  HClusterCanopy engine;
  engine.set_T1(T1);
  engine.set_T2(T2);
  cluster(engine, points, result);
}

void HSparseClusterMgr::kmeans(HSparsePoints const& points, int const& k,
                               std::vector<std::vector<int>>& result, bool use_canopy) {
  HClusterKMeans engine;
  engine.set_k(k);
  engine.set_use_canopy(use_canopy);
  cluster(engine, points, result);
}

void HSparseClusterMgr::dbscan(HSparsePoints const& points, double const& eps,
                               int const& min_points, bool const& use_similarity,
                               std::vector<std::vector<int>>& result) {
  HClusterDBScan engine;
  engine.set_eps(eps);
  engine.set_min_ponits(min_points);
  engine.mb_use_similarity = use_similarity;
  cluster(engine, points, result);
}

double HSparseClusterMgr::get_eps(HSparsePoints const& points, int const& min_points,
                                  bool use_distance) {
  return HParaPrefer::eps_of(*points.table(), min_points, use_distance);
}
