#pragma once

#include <cstdint>
#include <memory>

#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "host/export.h"

/// A box together with what is to be done with it.
class MORVA_EXPORT QXPPolicyMorvaClustBoxStateNode {
 public:
  /// 1 add the box to the index, 2 remove it, 3 replace it; 0, as at the start, nothing.
  std::int32_t i_state = 0;
  /// MD5 of the box file.
  HString str_box_md5;
  /// Name of the box file without its extension.
  HString str_box_id;
  /// Never null at the start: a new empty box. Copies of the record share it.
  std::shared_ptr<QXPPolicyMorvaClustBox> p_box;

  QXPPolicyMorvaClustBoxStateNode();
};
