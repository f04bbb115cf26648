#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// The values of some points by coordinate index, and by point where they share one. `Index` is
/// wide enough for the number of a point.
template <class Index>
struct ByColumn {
  /// Where the values of each column begin; one more entry for the end.
  std::vector<std::uint32_t> start;
  std::vector<Index> point;
  std::vector<double> value;

  /// Fewer than 2^32 values, none of them at `columns` or beyond. Costs time and memory in
  /// proportion to the values and the columns.
  ByColumn(std::span<SparsePoint const> points, std::size_t columns) : start(columns + 1) {
    for (SparsePoint const& one : points) {
      for (std::uint32_t const column : one.columns) {
        ++start[column];
      }
    }
    std::uint32_t total = 0;
    for (std::uint32_t& column_start : start) {
      total += column_start;
      column_start = total;
    }
    point.resize(total);
    value.resize(total);
    // From the back, so that each start moves down to the first of its values.
    for (std::size_t k = points.size(); k-- > 0;) {
      for (std::size_t i = 0; i < points[k].columns.size(); ++i) {
        std::uint32_t const place = --start[points[k].columns[i]];
        point[place] = static_cast<Index>(k);
        value[place] = points[k].values[i];
      }
    }
  }
};

}  // namespace morva
