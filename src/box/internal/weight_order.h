#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace morva {

/// The positions of the weights, heaviest first, in the order that exchanging neighbours brings
/// about where the left one is strictly less, until none is: equal weights keep their order, and no
/// weight passes one that is not a number.
std::vector<std::size_t> order_by_weight(std::span<double const> weights);

}  // namespace morva
