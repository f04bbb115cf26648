#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the run with a finding where something that must hold does not.
inline void require(bool holds, char const* what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

}  // namespace fuzz
