#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// Points with few zeros, interleaved by groups of eight, so that one point is measured against
/// eight at a time in the lanes of the machine's registers, each lane in its own index order.
class Lanes {
 public:
  explicit Lanes(std::span<SparsePoint const> points);

  /// `out[j]` becomes the distance from `x` to point `first` + j, whatever their dimensions.
  void distances(SparsePoint const& x, std::size_t first, std::span<double> out) const;
  /// The same with the sum of the products.
  void dots(SparsePoint const& x, std::size_t first, std::span<double> out) const;

 private:
  template <typename Kernel>
  void for_each_group(SparsePoint const& x, std::size_t first, std::span<double> out,
                      Kernel const& kernel) const;

  std::size_t columns_ = 0;
  // [group][column][lane]
  std::vector<double> data_;
};

}  // namespace morva
