#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One member point of a DBSCAN class in a cluster box.
class MORVA_EXPORT QXPFeatureNode {
 public:
  /// Label of the member.
  HString str_file_id;
  /// The member's coordinates, one for each word of the box.
  std::vector<double> vt_weight;

  QXPFeatureNode();
};
