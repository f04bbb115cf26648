#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// One sparse point with all its coordinates, to multiply others with it at the cost of theirs.
class SpreadPoint {
 public:
  /// Zero, for points without a value at `columns` or beyond.
  explicit SpreadPoint(std::size_t columns) : values_(columns) {}

  /// Becomes a point. Costs what that and the one before have of values.
  void become(SparsePoint const& point) {
    for (std::uint32_t const column : columns_) {
      values_[column] = 0.0;
    }
    columns_ = point.columns;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      values_[columns_[i]] = point.values[i];
    }
  }
  /// The sum of the products in index order.
  double dot(SparsePoint const& other) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < other.columns.size(); ++i) {
      sum += values_[other.columns[i]] * other.values[i];
    }
    return sum;
  }

 private:
  std::vector<double> values_;
  std::vector<std::uint32_t> columns_;
};

}  // namespace morva
