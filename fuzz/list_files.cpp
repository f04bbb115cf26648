#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "support/temporary_directory.h"
#include "tools/morvaai/documents/inputs.h"

// Lists of paths on standard input: each line is a path as it stands, a folder stands for its
// files.

namespace {

using fuzz::require;

constexpr std::size_t files_in_folder = 3;

/// The program runs in an empty place, below which `folder` has its files.
test::TemporaryDirectory const& place() {
  static test::TemporaryDirectory const one;
  return one;
}

std::size_t expected_count(std::string const& list) {
  std::istringstream lines(list);
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    bool const is_folder = line == "." || line == ".." || line == "folder";
    count += is_folder ? files_in_folder : line.empty() ? 0 : 1;
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  std::filesystem::create_directories(place().path() / "here/folder");
  for (char const* name : {"here/folder/a", "here/folder/b", "here/folder/\xFF"}) {
    place().write(name, "");
  }
  std::filesystem::current_path(place().path() / "here");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  // No list leads out of the place.
  std::string list(data, data + size);
  std::replace(list.begin(), list.end(), '/', '|');
  std::istringstream input(list);
  std::streambuf* const old = std::cin.rdbuf(input.rdbuf());
  std::cin.clear();
  std::vector<HString> const files = tool::expand_inputs({"-"});
  std::cin.rdbuf(old);
  require(files.size() == expected_count(list), "each line is a path, each folder its files");
  return 0;
}
