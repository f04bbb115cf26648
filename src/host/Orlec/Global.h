#pragma once

#include "host/Orlec/ParseLimits.h"
#include "host/export.h"

namespace Orlec {

/// Process-wide settings of the parser family. Set them before work begins.
class MORVA_EXPORT Global {
 public:
  /// Switches on the assertion-style log records.
  bool mb_assert_log = false;
  /// The bounds for every file that is parsed from now on.
  ParseLimits limits;

  /// The singleton; both names give the same object.
  static Global* ins();
  /// The singleton; `ins` gives the same object.
  static Global* pins();

 private:
  Global() = default;
};

}  // namespace Orlec
