#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "host/HString.h"
#include "host/native_path.h"
#include "morvajieba/segmenter.h"

namespace segmenter_test {

/// The dictionary of the build.
inline std::string built_dictionary() {
  return MORVA_TEST_DICT_PATH "/morvajieba.dict";
}

/// A directory of the test's own, gone at its end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "segmenter_XXXXXX").string();
    path_ = mkdtemp(name.data()) != nullptr ? name : std::string();
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(TemporaryDirectory const&) = delete;
  TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

  std::string file(std::string_view name) const { return path_ + '/' + std::string(name); }
  HString path() const { return morvabs::from_path(path_); }
  /// Writes a file under a new inode, as a program that replaces files does.
  std::string write(std::string_view name, std::string_view content) const {
    std::string path = file(name);
    std::ofstream(path + ".new", std::ios::binary) << content;
    std::filesystem::rename(path + ".new", path);
    return path;
  }
  void add_dictionary() const {
    std::filesystem::create_symlink(built_dictionary(), file("morvajieba.dict"));
  }

 private:
  std::string path_;
};

inline std::string read_all(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::wstring wide(HString const& text) {
  return text.get_ws();
}

class TokenList : public morvajieba::TokenSink {
 public:
  void token(std::wstring_view text) override { tokens.emplace_back(text); }
  std::vector<std::wstring> tokens;
};

}  // namespace segmenter_test
