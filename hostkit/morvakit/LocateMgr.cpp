#include "host/Orlec/LocateMgr.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

namespace Orlec {

namespace {

/// The value of a variable; empty counts as unset.
char const* variable(char const* name) {
  char const* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::string home_directory() {
  if (char const* const home = variable("HOME")) {
    return home;
  }
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
      found != nullptr) {
    return found->pw_dir;
  }
  return "/";
}

std::string find_data_directory() {
  Dl_info info{};
  static char const anchor = 0;  // any object of this library
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::filesystem::path const library = info.dli_fname;
  std::error_code error;
  // Made absolute at once: the loader may know the library by a path that ends with the working
  // directory.
  auto directory = std::filesystem::absolute(library.parent_path() / MORVA_DATA_FROM_LIB, error);
  return error ? std::string() : directory.lexically_normal().string();
}

/// The library stays where it was loaded from, so that one look is enough.
std::string const& data_directory() {
  static std::string const* const directory = new std::string(find_data_directory());
  return *directory;
}

HString fit(HString directory, bool with_separator) {
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
  if (char const* const path = variable("MORVA_DICT_PATH")) {
    return fit(HString(path), with_separator);
  }
  return fit(HString((data_directory() + "/dict").c_str()), with_separator);
}

HString LocateMgr::get_box_path(bool with_separator) const {
  if (char const* const path = variable("MORVA_BOX_PATH")) {
    return fit(HString(path), with_separator);
  }
  char const* const data_home = variable("XDG_DATA_HOME");
  std::string const base = data_home != nullptr ? data_home : home_directory() + "/.local/share";
  return fit(HString((base + "/morvaai/box").c_str()), with_separator);
}

}  // namespace Orlec
