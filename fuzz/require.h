#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// What the library promises of every input: where it does not hold, the input is a finding.
inline void require(bool holds, char const* promise) {
  if (!holds) {
    std::fprintf(stderr, "BROKEN PROMISE: %s\n", promise);
    std::abort();
  }
}

}  // namespace fuzz
