#pragma once

#include <vector>

#include "morvaai.h"

namespace tool {

/// The distance from each point to its `count`-th nearest other point, ascending: the sorted graph
/// in which Ester, Kriegel, Sander and Xu ("A density-based algorithm for discovering clusters",
/// KDD 1996) look for the radius of DBSCAN. A document that was not learnt needs that reach to have
/// `count` files around it. Empty where there are not so many other points.
///
/// Of more than 20,000 points only some are measured, evenly spaced, against all others, so that
/// time and memory stay within seconds and one row.
std::vector<double> neighbour_distances(HSparsePoints const& points, int count);

}  // namespace tool
