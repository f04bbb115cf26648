#include "box/internal/weight_order.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace morva {

std::vector<std::size_t> order_by_weight(std::span<double const> weights) {
  std::vector<std::size_t> order(weights.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  auto const is_nan = [weights](std::size_t i) { return std::isnan(weights[i]); };
  auto const is_heavier = [weights](std::size_t a, std::size_t b) {
    return weights[a] > weights[b];
  };
  auto const is_positive = [weights](std::size_t i) { return weights[i] > 0.0; };
  auto const is_zero = [weights](std::size_t i) { return weights[i] == 0.0; };
  auto begin = order.begin();
  while (begin != order.end()) {
    auto const end = std::find_if(begin, order.end(), is_nan);
    // A class lacks most words, and those need no sorting.
    auto const zeros = std::stable_partition(begin, end, is_positive);
    auto const negatives = std::stable_partition(zeros, end, is_zero);
    std::stable_sort(begin, zeros, is_heavier);
    std::stable_sort(negatives, end, is_heavier);
    begin = std::find_if_not(end, order.end(), is_nan);
  }
  return order;
}

}  // namespace morva
