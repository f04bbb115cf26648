#include "morvabs/locate.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include "host/HAppUUID.h"
#include "host/HEnvironment.h"
#include "host/HInsLocateMgr.h"
#include "host/native_path.h"

namespace morvabs {

namespace {

bool is_absolute(HString const& path) {
  return path[0] == L'/';
}

HString home_directory() {
  HString home = environment_path("HOME");
  if (home.not_empty()) {
    return home;
  }
  std::array<char, 16384> buffer;
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
  return found == nullptr || found->pw_dir == nullptr ? HString(L"/") : from_path(found->pw_dir);
}

std::string find_data_directory() {
  Dl_info info{};
  static char const anchor = 0;  // any object of this library
  if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::error_code error;
  // Made absolute at once: the loader may know the library by a path from the working directory.
  auto const library = std::filesystem::absolute(info.dli_fname, error);
  if (error) {
    return {};
  }
  // It may also know it by a link to its folder: /lib, where that is one to /usr/lib.
  auto folder = std::filesystem::canonical(library.parent_path(), error);
  if (error) {
    folder = library.parent_path();
  }
  return (folder / MORVA_DATA_FROM_LIB).lexically_normal().string();
}

/// The library stays where it was loaded from, so that one look is enough.
std::string const& data_directory() {
  static std::string const* const directory = new std::string(find_data_directory());
  return *directory;
}

}  // namespace

HString environment_path(char const* variable) {
  char const* const value = std::getenv(variable);
  return value == nullptr ? HString() : from_path(value);
}

HString user_data_directory() {
  HString data_home = environment_path("XDG_DATA_HOME");
  if (!is_absolute(data_home)) {
    data_home = home_directory().dir_fit(true) + L".local/share";
  }
  return data_home.dir_fit(true) + L"morvaai";
}

HString dictionary_directory() {
  HString const set = environment_path("MORVA_DICT_PATH");
  return set.empty() ? from_path(data_directory() + "/dict") : set;
}

HString executable_directory() {
  std::array<char, PATH_MAX> buffer;
  ssize_t const length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (length <= 0) {
    return L".";
  }
  return from_path({buffer.data(), static_cast<std::size_t>(length)}).get_path(false);
}

}  // namespace morvabs

namespace {

HString run_path_or(HString const& fallback, bool with_separator) {
  HString directory = morvabs::environment_path("MORVA_RUN_PATH");
  if (directory.empty()) {
    directory = fallback;
  }
  return directory.dir_fit(with_separator);
}

}  // namespace

HString HEnvironment::GetMyExeFullFilePath(bool with_separator) {
  return run_path_or(morvabs::executable_directory(), with_separator);
}

HInsLocateMgr* HInsLocateMgr::ins() {
  static HInsLocateMgr manager;
  return &manager;
}

HInsLocateMgr* HInsLocateMgr::pins() {
  return ins();
}

HString HInsLocateMgr::get_agent_path_public(bool with_separator) const {
  return run_path_or(morvabs::user_data_directory(), with_separator);
}

HAppUUID* HAppUUID::ins() {
  static HAppUUID id;
  return &id;
}

HAppUUID* HAppUUID::pins() {
  return ins();
}

HString HAppUUID::get() const {
  return morvabs::environment_path("MORVA_AGENT_ID");
}
