#pragma once

#include "host/HString.h"
#include "host/export.h"

/// What the process knows of where it runs.
class MORVA_EXPORT HEnvironment {
 public:
  /// The directory under which working files are put: MORVA_RUN_PATH where that is set, else the
  /// directory of the running executable. With true, it ends in "/".
  static HString GetMyExeFullFilePath(bool with_separator);
};
