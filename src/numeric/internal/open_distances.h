#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// Measures exactly what bounds have left open. Keeps its room from row to row, so that a search
/// has one for all its rows.
class OpenDistances {
 public:
  explicit OpenDistances(DistanceTable const& table) : table_(table) {}

  /// Calls `visit(j, distance)` with the distance of `x` and point j for each j that is open, in
  /// their order; none is before `first`.
  template <typename Index, typename Visit>
  void measure(SparsePoint const& x, std::size_t first, std::vector<Index> const& open,
               Visit const& visit) {
    // Where there are many, one sweep is cheaper than pair by pair.
    constexpr std::size_t few = 16;
    constexpr std::size_t one_of = 8;
    if (open.size() > few && open.size() > (table_.size() - first) / one_of) {
      row_.resize(table_.size() - first);
      table_.distances(x, first, row_);
      for (auto const j : open) {
        visit(j, row_[j - first]);
      }
      return;
    }
    for (auto const j : open) {
      visit(j, distance(x, table_[j]));
    }
  }

 private:
  DistanceTable const& table_;
  std::vector<double> row_;
};

}  // namespace morva
