#pragma once

#include <vector>

#include "host/HDirSnap.h"
#include "host/HString.h"
#include "host/export.h"

/// Gathers the paths of the regular files that a directory walk reports.
class MORVA_EXPORT HClusterDirSnapCallback : public HDirSnapCallback {
 public:
  /// In the order of the walk.
  std::vector<HString> vt_files;

  HClusterDirSnapCallback();
  ~HClusterDirSnapCallback() override;

  /// Always 0: the walk goes on.
  int on_snap_file(HDirSnapEntry const& entry) override;
};
