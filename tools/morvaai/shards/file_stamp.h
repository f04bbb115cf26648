#pragma once

#include <cstdint>
#include <string>

namespace tool {

/// What tells that a file has changed: its size, and when its content and it itself last did, in
/// nanoseconds. All 0 for a file that is not there.
struct FileStamp {
  std::uint64_t size = 0;
  std::uint64_t content_changed = 0;
  std::uint64_t changed = 0;

  /// That of the file behind a path in bytes, symbolic links followed.
  static FileStamp of(std::string const& path);
  friend bool operator==(FileStamp const&, FileStamp const&) = default;
};

}  // namespace tool
