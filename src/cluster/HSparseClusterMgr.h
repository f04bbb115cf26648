#pragma once

#include <vector>

#include "host/export.h"
#include "numeric/HSparsePoints.h"

class HClusterBase;

/// Runs the clustering engines, and estimates the radius for DBSCAN, on points of which only the
/// coordinates that are not zero are kept. The counterpart of `HClusterMgr` and of
/// `HParaPrefer::get_eps`: every answer is theirs to the last bit, every log line the same.
///
/// Each run replaces `result` by the clusters, lists of positions in `points`; a failed run and one
/// without clusters both leave it empty.
class MORVA_EXPORT HSparseClusterMgr {
 public:
  HSparseClusterMgr();
  ~HSparseClusterMgr();

  /// As `HClusterMgr::canopy`.
  static void canopy(HSparsePoints const& points, double const& T1, double const& T2,
                     std::vector<std::vector<int>>& result);
  /// As `HClusterMgr::kmeans`.
  static void kmeans(HSparsePoints const& points, int const& k,
                     std::vector<std::vector<int>>& result, bool use_canopy);
  /// As `HClusterMgr::dbscan`.
  static void dbscan(HSparsePoints const& points, double const& eps, int const& min_points,
                     bool const& use_similarity, std::vector<std::vector<int>>& result);
  /// As `HParaPrefer::get_eps`.
  static double get_eps(HSparsePoints const& points, int const& min_points, bool use_distance);

 private:
  static void cluster(HClusterBase& engine, HSparsePoints const& points,
                      std::vector<std::vector<int>>& result);
};
