#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/QXPFeatureNode.h"
#include "host/export.h"

/// One DBSCAN class in a cluster box.
class MORVA_EXPORT QXPDBScanNode {
 public:
  HString str_class_id;
  /// Label of the class, which a match reports.
  HString str_class_name;
  /// Neighbourhood radius and minimum point count of the run.
  double d_eps = 0.0;
  std::int32_t i_minpts = 0;
  std::vector<QXPFeatureNode> vt_file_node;

  QXPDBScanNode();
};
