#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "reference/random_matrix.h"

namespace test {

#ifdef MORVA_SANITIZED
/// There a case takes twenty times as long.
inline constexpr int share_of_rounds = 4;
#else
inline constexpr int share_of_rounds = 1;
#endif

/// Calls `check(rows, random)` for random point sets of every kind, under sanitizers for a quarter
/// of the rounds. A failure names the seed and the kind of its case, and ends the walk.
template <typename Check>
void for_random_points(int rounds, std::uint64_t seed, Check check) {
  for (int round = 0; round * share_of_rounds < rounds; ++round) {
    for (int kind = 0; kind < reference::RandomMatrix::kinds; ++kind) {
      std::uint64_t const seed_of_case =
          seed + static_cast<std::uint64_t>(round) * 100 + static_cast<std::uint64_t>(kind);
      reference::RandomMatrix random(seed_of_case);
      SCOPED_TRACE("kind " + std::to_string(kind) + ", seed " + std::to_string(seed_of_case));
      check(random.points(kind, random.size()), random);
      if (testing::Test::HasFailure()) {
        return;
      }
    }
  }
}

}  // namespace test
