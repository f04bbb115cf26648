#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

namespace morva {

/// Rows of a table, of which a process searches its part.
struct Rows {
  std::size_t begin = 0;
  std::size_t end = 0;

  std::size_t size() const { return end - begin; }
  /// As far as there are rows.
  Rows up_to(std::size_t count) const {
    std::size_t const last = std::min(end, count);
    return {std::min(begin, last), last};
  }
};

inline constexpr Rows every_row{0, std::numeric_limits<std::size_t>::max()};

}  // namespace morva
