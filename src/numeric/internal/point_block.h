#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/by_column.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// Some points by coordinate index, in memory that stays close to the processor while many others
/// are measured against them, several at a time.
class PointBlock {
 public:
  /// Number of points that are measured against the block at a time.
  static constexpr std::size_t width = 4;
  using Others = std::array<SparsePoint const*, width>;
  /// A value for each of the others.
  struct alignas(width * sizeof(double)) Row {
    std::array<double, width> lanes;
  };

  /// Fewer than 2^16 points, of which none has a value at `columns` or beyond. Costs time and
  /// memory in proportion to the values and the columns.
  PointBlock(std::span<SparsePoint const> points, std::size_t columns);

  /// The distances of the first `count` points of the block from the others, whatever their
  /// dimensions, each the root of its sum of squares in index order. The others have no value at
  /// `columns` or beyond. Good until the next call.
  std::span<Row const> distances(Others const& others, std::size_t count);

 private:
  ByColumn<std::uint16_t> values_;
  std::vector<Row> sums_;
  // The sums of the points that share a column with the others.
  std::vector<Row> shared_;
};

}  // namespace morva
