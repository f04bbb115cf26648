#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/QXPFeatureNode.h"
#include "host/export.h"

/// One DBSCAN class in a cluster box.
class MORVA_EXPORT QXPDBScanNode {
 public:
  /// Identifier of the class, by which boxes are asked.
  HString str_class_id;
  /// Label of the class, which a match reports.
  HString str_class_name;
  /// Neighbourhood radius of the run.
  double d_eps = 0.0;
  /// How many members must lie within the radius of a document for it to belong to the class.
  std::int32_t i_minpts = 0;
  /// The members, each a point over the words of the box.
  std::vector<QXPFeatureNode> vt_file_node;

  QXPDBScanNode();
};
