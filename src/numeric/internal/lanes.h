#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"
#include "numeric/internal/wide.h"

namespace morva {

/// Points with few zeros, interleaved by groups, so that points are measured against a group at a
/// time in the lanes of the machine's registers, each lane in its own index order.
class Lanes {
 public:
  explicit Lanes(std::span<SparsePoint const> points);
  /// How many points whole groups of so many have room for.
  static std::size_t padded(std::size_t count) {
    constexpr std::size_t together = wide::lanes * wide::groups_together;
    return (count + together - 1) / together * together;
  }

  /// `out[j]` becomes the distance from `x` to point `first` + j, whatever their dimensions.
  void distances(SparsePoint const& x, std::size_t first, std::span<double> out) const;
  /// The same for several points at once, which reads the groups less often: behind each other for
  /// each of `rows`, as many as `out` has room for.
  void distances(std::span<SparsePoint const> rows, std::size_t first, std::span<double> out) const;
  /// `out[j]` becomes the sum of the products.
  void dots(SparsePoint const& x, std::size_t first, std::span<double> out) const;

 private:
  std::size_t columns_ = 0;
  // [group][column]
  std::vector<wide::Column> groups_;
};

}  // namespace morva
