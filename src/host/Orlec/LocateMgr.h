#pragma once

#include "host/HString.h"
#include "host/export.h"

namespace Orlec {

/// Knows the directories of the parser family. The environment is asked at every call; a variable
/// that is set wins even where its directory is empty or missing. Nothing is created.
class MORVA_EXPORT LocateMgr {
 public:
  /// The singleton; both names give the same object.
  static LocateMgr* ins();
  /// The singleton; `ins` gives the same object.
  static LocateMgr* pins();

  /// The directory of the word dictionaries: MORVA_DICT_PATH, else the data directory that lies
  /// beside the library, installed or in the build tree. With true, it ends in "/".
  HString get_dict_path(bool with_separator) const;
  /// The directory of cluster boxes: MORVA_BOX_PATH, else $XDG_DATA_HOME/morvaai/box, else
  /// ~/.local/share/morvaai/box. With true, it ends in "/".
  HString get_box_path(bool with_separator) const;

 private:
  LocateMgr() = default;
};

}  // namespace Orlec
