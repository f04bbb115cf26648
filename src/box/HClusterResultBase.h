#pragma once

#include <vector>

#include "box/HClusterResultFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"

/// What the classes of every method have.
class MORVA_EXPORT HClusterResultBase {
 public:
  /// A UUID.
  HString str_class_id;
  /// "分类" and the number of the class in its run, from 0.
  HString str_class_name;
  /// The strongest words of the class, each with a blank behind it.
  HString str_class_desc;
  /// The words of the class with their weights, one to a line.
  HString str_class_feature;
  /// In the order of the member list.
  std::vector<HClusterResultFeatureNode> vt_file_node;

  HClusterResultBase();
};
