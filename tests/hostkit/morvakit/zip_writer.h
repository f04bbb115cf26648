#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Makes ZIP containers for tests, good and bad ones.
class ZipWriter {
 public:
  struct Options {
    bool deflate = false;
    bool encrypted = false;
    /// Compression method that the directory names where it is not to be the true one.
    int stated_method = -1;
    bool wrong_checksum = false;
  };

  ZipWriter& add(std::string_view name, std::string_view content);
  ZipWriter& add(std::string_view name, std::string_view content, Options const& options);
  /// The container so far, with its directory.
  std::string bytes() const;

 private:
  std::string parts_;
  std::string directory_;
  std::uint32_t count_ = 0;
};
