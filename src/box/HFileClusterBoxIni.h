#pragma once

#include "host/HString.h"
#include "host/export.h"

/// The index of the cluster boxes on this machine: an INI file beside the boxes.
class MORVA_EXPORT HFileClusterBoxIni {
 public:
  /// Path of the index, formed when the library is loaded: the directory of boxes and "box.ini".
  /// Nothing is created.
  static HString mstr_box_ini;
};
