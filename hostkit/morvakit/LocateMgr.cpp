#include "host/Orlec/LocateMgr.h"

#include "morvabs/locate.h"

namespace Orlec {

namespace {

HString fitted(HString directory, bool with_separator) {
  if (with_separator) {
    directory.dir_fit(true);
  }
  return directory;
}

}  // namespace

LocateMgr* LocateMgr::ins() {
  static LocateMgr* const manager =
      new LocateMgr;  // outlives every caller, static objects included
  return manager;
}

LocateMgr* LocateMgr::pins() {
  return ins();
}

HString LocateMgr::get_dict_path(bool with_separator) const {
  return fitted(morvabs::dictionary_directory(), with_separator);
}

HString LocateMgr::get_box_path(bool with_separator) const {
  HString const set = morvabs::environment_path("MORVA_BOX_PATH");
  return fitted(set.empty() ? morvabs::user_data_directory() + L"/box" : set, with_separator);
}

}  // namespace Orlec
