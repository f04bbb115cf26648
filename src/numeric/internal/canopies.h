#pragma once

#include <cstddef>
#include <vector>

#include "numeric/internal/distance_table.h"

namespace morva {

/// Canopies over all points in list order, one after the other, but no more than `most`: the first
/// point that is left, and behind it, ascending, those that are left within `radius` of it, the
/// border included.
///
/// Divided among the processes of the table's group, of which each gets all of them. As long as
/// most points that are left begin a canopy, the neighbours of more and more of them are searched
/// for at once; those of points that are gone by the time count for nothing.
std::vector<std::vector<int>> canopies(DistanceTable const& table, double radius, std::size_t most);

}  // namespace morva
