#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One entry of the index of local boxes.
class MORVA_EXPORT HClusterBoxLocalNode {
 public:
  /// Name of the box file without its extension.
  HString str_box_id;
  /// MD5 of the box file.
  HString str_box_md5;
  /// The identifiers of the classes in the box, in box order.
  std::vector<HString> vt_class_id;

  HClusterBoxLocalNode();

  /// Three lines that tell the entry, for diagnosis.
  HString to_str() const;
};
