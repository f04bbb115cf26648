#pragma once

#include <array>
#include <climits>
#include <cstddef>

#include "host/HString.h"

namespace morvabs {

/// The bytes that a path stands for on disk, as `to_path` gives them, without an allocation: for
/// what has to be done when memory has run out.
class PathBytes {
 public:
  explicit PathBytes(HString const& path);

  /// Null for a path that no file can have, and for one that is longer than the system takes.
  char const* get() const { return is_path_ ? bytes_.data() : nullptr; }

 private:
  std::array<char, PATH_MAX> bytes_;
  bool is_path_ = false;
};

}  // namespace morvabs
