#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One member file of a class.
class MORVA_EXPORT HClusterResultFeatureNode {
 public:
  /// Identifier of the file, as in its `HFeatureNode`.
  HString str_file_id;
  /// Its name without directories and extension, as there.
  HString str_file_name;
  /// The coordinates of the file's point, one for each word of the vocabulary.
  std::vector<double> vt_data;

  HClusterResultFeatureNode();
};
