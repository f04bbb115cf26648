#include "console/HClusterDirSnapCallback.h"

#include "host/HFile.h"

HClusterDirSnapCallback::HClusterDirSnapCallback() = default;
HClusterDirSnapCallback::~HClusterDirSnapCallback() = default;

int HClusterDirSnapCallback::on_snap_file(HDirSnapEntry const& entry) {
  if (!entry.mb_skip && HFile::IsFileExistFile(entry.str_path)) {
    vt_files.push_back(entry.str_path);
  }
  return 0;
}
