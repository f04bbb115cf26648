#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace morva {

/// The positions of the weights, heaviest first, in the order that exchanging neighbours brings
/// about where the left one is strictly less, until none is: equal weights keep their order, and no
/// weight passes one that is not a number.
std::vector<std::size_t> order_by_weight(std::span<double const> weights);

/// A weight and its position in a list of weights.
struct PlacedWeight {
  std::size_t position;
  double weight;
};
/// The beginning of that order for a list of `size` weights, of which those that are not in
/// `weights`, ascending by position, are 0.0, and all are numbers: at least `count` of them where
/// there are so many, and all above 0.0.
std::vector<PlacedWeight> first_by_weight(std::vector<PlacedWeight> weights, std::size_t size,
                                          std::size_t count);

}  // namespace morva
