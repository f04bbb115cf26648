#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "host/HString.h"

namespace test {

/// A new directory that goes with its content at the end of its scope.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "morvaai-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
    path_ = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(TemporaryDirectory const&) = delete;
  TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

  std::filesystem::path const& path() const { return path_; }
  /// The path of an entry in it.
  HString operator/(char const* name) const { return HString((path_ / name).c_str()); }
  /// Writes a file in it and returns its path.
  HString write(char const* name, std::string const& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return *this / name;
  }
  std::string read(char const* name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

 private:
  std::filesystem::path path_;
};

/// An environment variable set for one scope.
class EnvironmentVariable {
 public:
  EnvironmentVariable(char const* name, std::string const& value) : name_(name) {
    if (char const* const old = std::getenv(name)) {
      had_value_ = true;
      old_ = old;
    }
    setenv(name, value.c_str(), 1);
  }
  ~EnvironmentVariable() {
    if (had_value_) {
      setenv(name_, old_.c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }
  EnvironmentVariable(EnvironmentVariable const&) = delete;
  EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

 private:
  char const* name_;
  bool had_value_ = false;
  std::string old_;
};

}  // namespace test
