#include "tessarine/pdf_component_loader.h"

#include <string>

#include <dlfcn.h>

namespace tessarine {

namespace {

/// Path of the component: beside this library. Never a bare name, which the system would look for
/// in directories that others may write to.
std::string component_path() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&pdf_component_function), &info) == 0 ||
      info.dli_fname == nullptr) {
    return {};
  }
  std::string const own = info.dli_fname;
  auto const slash = own.rfind('/');
  return slash == std::string::npos ? std::string{} : own.substr(0, slash + 1) + pdf_component_file;
}

void* load_component() {
  auto const path = component_path();
  // It stays loaded: its libraries keep state of their own until the process ends.
  return path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

void* pdf_component_function(char const* symbol) {
  static void* const component = load_component();
  return component == nullptr ? nullptr : dlsym(component, symbol);
}

}  // namespace tessarine
