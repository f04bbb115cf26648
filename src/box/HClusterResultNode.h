#pragma once

#include <cstdint>
#include <vector>

#include "box/HClusterResultDBScanNode.h"
#include "box/HClusterResultKMeansNode.h"
#include "host/HString.h"
#include "host/export.h"

/// The whole result of one clustering run, filled by `HClusterResultMgr`.
class MORVA_EXPORT HClusterResultNode {
 public:
  /// Number of feature records given to the run.
  std::int64_t n_file_count = 0;
  /// The word of coordinate i of every point stands at position i.
  std::vector<HString> vt_words;
  /// Stays empty.
  std::vector<int> vt_reserved;
  /// 0 K-means, 1 DBSCAN.
  std::int32_t i_cluster_type = 0;
  /// The classes of a K-means run, in its order; empty for others.
  std::vector<HClusterResultKMeansNode> vt_kmeans_node;
  /// The classes of a DBSCAN run, in its order; empty for others.
  std::vector<HClusterResultDBScanNode> vt_dbscan_node;

  HClusterResultNode();
};
