#pragma once

#include <vector>

#include "cluster/HClusterBase.h"
#include "host/export.h"
#include "numeric/HPointN.h"

/// Runs the clustering engines. Each operation replaces `result` by the clusters, lists of indices
/// into `points`; a failed run and one without clusters both leave it empty.
///
/// The operations that name a method keep the points where they are: a run takes memory in
/// proportion to the coordinates that are not zero.
class MORVA_EXPORT HClusterMgr {
 public:
  /// The singleton; null until it is first asked for.
  static HClusterMgr* pmgr;

  HClusterMgr();
  ~HClusterMgr();

  /// The singleton, made at first use.
  static HClusterMgr* pins();

  /// Runs an engine that the caller has set up, once.
  void cluster(HClusterBase* engine, std::vector<HPointN> const& points,
               std::vector<std::vector<int>>& result);
  /// `HClusterCanopy` without a wanted number of clusters.
  void canopy(std::vector<HPointN> const& points, double const& T1, double const& T2,
              std::vector<std::vector<int>>& result);
  /// `HClusterKMeans`.
  void kmeans(std::vector<HPointN> const& points, int const& k,
              std::vector<std::vector<int>>& result, bool use_canopy);
  /// `HClusterDBScan`. With `use_similarity`, any two points with a positive cosine are neighbours
  /// and `eps` has no effect; for another threshold, set up an engine.
  void dbscan(std::vector<HPointN> const& points, double const& eps, int const& min_points,
              bool const& use_similarity, std::vector<std::vector<int>>& result);
};
