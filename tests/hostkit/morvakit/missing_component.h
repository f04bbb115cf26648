#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "morvabs/component.h"

#include "support/temporary_directory.h"

namespace test {

/// Whether a disabled test of this program passes in a process of its own, where the library that
/// loads the components is in a directory that has none of them.
inline bool passes_without_components(std::string const& name) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&morvabs::component_function), &info) == 0) {
    return false;
  }
  TemporaryDirectory const directory;
  std::filesystem::path const library = info.dli_fname;
  std::filesystem::copy_file(library, directory.path() / library.filename());
  EnvironmentVariable const path("LD_LIBRARY_PATH",
                                 directory.path().string() + ":" + library.parent_path().string());
  auto const command = "'" + std::filesystem::canonical("/proc/self/exe").string() +
                       "' --gtest_also_run_disabled_tests --gtest_filter=" + name + " > /dev/null";
  return std::system(command.c_str()) == 0;
}

}  // namespace test
