#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Knows the directories of an installed agent.
class MORVA_EXPORT HInsLocateMgr {
 public:
  /// The singleton; both names give the same object.
  static HInsLocateMgr* ins();
  /// The singleton; `ins` gives the same object.
  static HInsLocateMgr* pins();

  /// The agent's public data directory: MORVA_RUN_PATH where that is set, else
  /// $XDG_DATA_HOME/morvaai, else ~/.local/share/morvaai. With true, it ends in "/".
  HString get_agent_path_public(bool with_separator) const;

 private:
  HInsLocateMgr() = default;
};
