#pragma once

#include <cstddef>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// Whether the index is one of the points.
inline bool is_point(std::vector<SparsePoint> const& points, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < points.size();
}

/// The members that are points, in their order.
std::vector<SparsePoint const*> valid_members(std::vector<SparsePoint> const& points,
                                              std::vector<int> const& members);

}  // namespace morva
