#include "morvabs/component.h"

#include <string>

#include <dlfcn.h>

namespace morvabs {

namespace {

/// Where the components are: beside this library. Never a bare name, which the system would look
/// for in directories that others may write to.
std::string component_path(char const* file) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&component_function), &info) == 0 ||
      info.dli_fname == nullptr) {
    return {};
  }
  std::string const own = info.dli_fname;
  auto const slash = own.rfind('/');
  return slash == std::string::npos ? std::string{} : own.substr(0, slash + 1) + file;
}

}  // namespace

void* component_function(char const* file, char const* symbol) {
  auto const path = component_path(file);
  // Never closed: what it links keeps state of its own until the process ends.
  void* const component = path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  return component == nullptr ? nullptr : dlsym(component, symbol);
}

}  // namespace morvabs
