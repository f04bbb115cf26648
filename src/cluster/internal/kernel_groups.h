#pragma once

#include <vector>

#include "cluster/internal/neighbour_matrix.h"

namespace morva {

/// The groups of kernel points: of each kernel point, in order, a group with the kernel neighbours
/// behind it; then each group, in order, absorbs those behind it that share a point with it. After
/// absorbing one it goes on with the groups from its own position + 2, so that the one right behind
/// it is not tried again. Without the groups that were absorbed; merged ones are ascending. All
/// kernel points are points of the matrix.
std::vector<std::vector<int>> merge_kernel_groups(NeighbourMatrix const& neighbours,
                                                  std::vector<int> const& kernels);

}  // namespace morva
