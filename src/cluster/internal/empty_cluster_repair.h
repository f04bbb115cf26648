#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "numeric/internal/distance_table.h"

namespace morva {

/// Deals the points that lie farthest from the centers of their clusters out to the empty clusters,
/// in key order; of equally far points the first goes first, and points at distance 0.0 stay.
/// Members that are no points of the table have no part in a center, and only those below `count`
/// are dealt out.
void fill_empty_clusters(DistanceTable const& points, std::size_t count,
                         std::map<int, std::vector<int>>& clusters);

}  // namespace morva
