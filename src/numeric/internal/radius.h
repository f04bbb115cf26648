#pragma once

#include <span>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// The greatest distance of a center from the points around it, 0.0 where there are none; one that
/// is not a number does not count. Bounds rule out, at the cost of the points' coordinates alone,
/// those that are certainly nearer than another: a center of documents has most words of all of
/// them. Takes 8 bytes for each column.
double radius(SparsePoint const& center, std::span<SparsePoint const* const> points);

}  // namespace morva
