#pragma once

#include <cstddef>

namespace morva {

/// How rows of 128 bits are looked up by parts of them, the bands, so that none of those is missed
/// that differ from a row in at most `most` bits.
///
/// Band k is allowed a radius of r(k) bits, and all r(k) + 1 together make most + 1. Rows that
/// differ in more than its radius in every band differ in at least most + 1 bits, as no bit is in
/// two bands; so rows that differ in at most `most` are within the radius in one band, and are
/// found where every key within the radius of a row's own is looked up in every band (Manku, Jain,
/// Das Sarma, 2007, with radius 0; Norouzi, Punjani, Fleet, 2012).
struct BandPlan {
  static constexpr std::size_t row_bits = 128;

  /// 0: nothing is looked up, and every row is compared. Else at most `most` + 1.
  std::size_t bands = 0;
  /// Bits of each, at most `row_bits` / `bands` and 20; more of the row need not be in a band.
  std::size_t width = 0;

  std::size_t first_bit(std::size_t band) const { return band * (row_bits / bands); }
  /// Radii differ by one at most.
  std::size_t radius(std::size_t band, std::size_t most) const {
    return (most + 1) / bands - (band < (most + 1) % bands ? 0 : 1);
  }
  /// Number of keys that are looked up for a row in all bands, as a double since it may be huge.
  double lookups(std::size_t most) const;
};

/// What the work on one row costs, in comparisons of a row with one of those that lie in a line:
/// the lookup of a key, the comparison with a row that was looked up, and the entry of a row into a
/// band or of a key into its table. Measured in bench/similar_bench.cpp.
namespace band_cost {
inline constexpr double lookup = 30.0;
inline constexpr double candidate = 5.0;
inline constexpr double entry = 20.0;
}  // namespace band_cost

/// The plan that should cost least for so many rows, if their bits are as good as random. What it
/// says decides about time alone.
BandPlan best_plan(std::size_t rows, std::size_t most);

}  // namespace morva
