#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "numeric/internal/by_column.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// For each coordinate index the points that have a value there: measures one point against many
/// at the cost of the values that are not zero, with the same bits as pair by pair.
class Postings {
 public:
  /// Fewer than 2^32 values.
  explicit Postings(std::span<SparsePoint const> points);

  /// `out[j]` becomes the distance from `x` to point j, whatever their dimensions. Every lane of
  /// `out` sums its squares in index order, the lanes side by side.
  void distances(SparsePoint const& x, std::span<double> out) const;
  /// `out[j]` becomes the sum of the products of `x` and point `first` + j, in index order. Equal
  /// to the dense sum where all values are finite.
  void dots(SparsePoint const& x, std::size_t first, std::span<double> out) const;

 private:
  struct Range {
    std::size_t begin;
    std::size_t end;
  };
  Range of_column(std::uint32_t column) const;
  void add_squares(Range range, std::span<double> out) const;

  ByColumn<std::uint32_t> values_;
};

}  // namespace morva
