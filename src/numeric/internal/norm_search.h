#pragma once

#include <optional>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/rows.h"

namespace morva {

/// Of all pairs i < j, the first of those with the greatest distance above 0.0, of a table with
/// sparse bounds.
///
/// The points are taken by descending length. As no distance is above the lengths of both points
/// together, and none of two points without negative coordinates above the root of their squares,
/// most points are too short to be farther from any other than a pair that is known already. Where
/// lengths rule out too little, as for points of equal length, rows are searched whole.
///
/// `rows`: only pairs of which one certain point is in the part; those of all parts together are
/// all pairs. A row costs as much wherever it is in the table.
std::optional<FoundPair> farthest_by_norms(DistanceTable const& table, Rows rows = every_row);

}  // namespace morva
