#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// Points with few zeros, interleaved by groups, so that one point is measured against a group at a
/// time in the lanes of the machine's registers, each lane in its own index order.
class Lanes {
 public:
  explicit Lanes(std::span<SparsePoint const> points);

  /// `out[j]` becomes the distance from `x` to point `first` + j, whatever their dimensions.
  void distances(SparsePoint const& x, std::size_t first, std::span<double> out) const;
  /// The same with the sum of the products.
  void dots(SparsePoint const& x, std::size_t first, std::span<double> out) const;

 private:
  using AddColumns = void (*)(std::span<double const> x, double const* group, double* sums);

  std::vector<double> in_full(SparsePoint const& x) const;
  void add_groups(std::span<double const> x, std::size_t first, AddColumns add,
                  std::span<double> out) const;

  std::size_t columns_ = 0;
  // [group][column][lane]
  std::vector<double> data_;
};

}  // namespace morva
