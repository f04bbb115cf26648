#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/QXPFeatureNode.h"
#include "host/export.h"

/// One class as the host hands it over to be stored in a cluster box. Which fields count depends on
/// the type of the clustering.
class MORVA_EXPORT HClusterOut {
 public:
  /// Identifier of the class, by which boxes are asked.
  HString str_class_id;
  /// Label of the class, which a match reports.
  HString str_class_name;
  /// Not stored.
  HString str_class_desc;
  /// Not stored.
  HString str_class_feature;
  /// Belongs to the host: not stored.
  std::int64_t i_reserve = 0;
  /// DBSCAN: the radius of the run; to be set by the caller.
  double d_eps = 0.0;
  /// DBSCAN: the number of neighbours that the run asked for; to be set by the caller.
  std::int32_t i_minpts = 0;
  /// K-means: only the length is stored. Nothing reads it back, and it costs memory in every loaded
  /// box, so it is best left empty.
  std::vector<HString> vt_words;
  /// DBSCAN: the members.
  std::vector<QXPFeatureNode> vt_file_node;
  /// K-means: the center, one value for each word of the box.
  std::vector<double> vt_center;
  /// K-means: the radius; to be set by the caller.
  double d_radius = 0.0;

  HClusterOut();
};
