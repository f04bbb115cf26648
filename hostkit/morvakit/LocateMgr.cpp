#include "host/Orlec/LocateMgr.h"

#include <filesystem>
#include <string>
#include <system_error>

#include <dlfcn.h>

#include "host/native_path.h"
#include "morvabs/locate.h"

namespace Orlec {

namespace {

std::string find_data_directory() {
  Dl_info info{};
  static char const anchor = 0;  // any object of this library
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::filesystem::path const library = info.dli_fname;
  std::error_code error;
  // Made absolute at once: the loader may know the library by a path from the working directory.
  auto const directory =
      std::filesystem::absolute(library.parent_path() / MORVA_DATA_FROM_LIB, error);
  return error ? std::string() : directory.lexically_normal().string();
}

/// The library stays where it was loaded from, so that one look is enough.
std::string const& data_directory() {
  static std::string const* const directory = new std::string(find_data_directory());
  return *directory;
}

HString locate(char const* variable, HString const& otherwise, bool with_separator) {
  HString directory = morvabs::environment_path(variable);
  if (directory.empty()) {
    directory = otherwise;
  }
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
  return locate("MORVA_DICT_PATH", morvabs::from_path(data_directory() + "/dict"), with_separator);
}

HString LocateMgr::get_box_path(bool with_separator) const {
  return locate("MORVA_BOX_PATH", morvabs::user_data_directory() + HString(L"/box"),
                with_separator);
}

}  // namespace Orlec
