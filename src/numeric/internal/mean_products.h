#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/by_column.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// Multiplies one point after the other with the same means. Columns that a quarter of the means
/// have values in are kept as rows with a place for each mean, which are added side by side; the
/// others as lists of their values.
class MeanProducts {
 public:
  /// Copies the means, which have fewer than 2^32 values in all: up to 64 bytes for each value, 32
  /// where there are many means, and 8 for each column.
  explicit MeanProducts(std::span<SparsePoint const* const> means);

  /// `out[j]` becomes the sum of the products of `x` and mean j, in any order.
  void multiply(SparsePoint const& x, std::span<double> out);

 private:
  /// The means with rows for some columns and the values of the others left.
  struct Parts;
  explicit MeanProducts(Parts parts);

  static Parts split(std::span<SparsePoint const* const> means);

  std::size_t columns_;
  // Places of a row, a multiple of what is added together.
  std::size_t stride_;
  // The number of each column's row.
  std::vector<std::uint32_t> row_of_;
  std::vector<double> rows_;
  ByColumn<std::uint32_t> lists_;
  // The rows of a point's columns with its values there, and their sum.
  std::vector<double const*> added_;
  std::vector<double> factors_;
  std::vector<double> sums_;
};

}  // namespace morva
