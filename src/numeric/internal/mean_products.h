#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

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
  /// A list of so many entries from `begin` on, or the row with that number.
  struct Column {
    std::uint32_t begin = 0;
    std::uint32_t count = 0;
  };
  struct Entry {
    std::uint32_t mean;
    double value;
  };
  struct Multiple {
    double factor;
    std::span<Entry const> list;
  };

  void lay_out(std::span<SparsePoint const* const> means);
  void fill(std::span<SparsePoint const* const> means);
  void look_up(SparsePoint const& x);

  std::vector<Column> columns_;
  // Places of a row, a multiple of what is added together.
  std::size_t stride_;
  std::vector<double> rows_;
  std::vector<Entry> entries_;
  // The lists of a point, its rows with its values there, and the sum of these.
  std::vector<Multiple> lists_at_hand_;
  std::vector<double const*> rows_at_hand_;
  std::vector<double> factors_;
  std::vector<double> sums_;
};

}  // namespace morva
