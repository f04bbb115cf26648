#include "box/internal/weight_order.h"

#include <algorithm>
#include <cmath>
#include <iterator>
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

std::vector<PlacedWeight> first_by_weight(std::vector<PlacedWeight> weights, std::size_t size,
                                          std::size_t count) {
  auto const is_heavier = [](PlacedWeight const& a, PlacedWeight const& b) {
    return a.weight > b.weight;
  };
  std::vector<PlacedWeight> order;
  std::copy_if(weights.begin(), weights.end(), std::back_inserter(order),
               [](PlacedWeight const& one) { return one.weight > 0.0; });
  std::stable_sort(order.begin(), order.end(), is_heavier);
  auto next = weights.begin();
  for (std::size_t position = 0; position < size && order.size() < count; ++position) {
    bool const is_given = next != weights.end() && next->position == position;
    PlacedWeight const one = is_given ? *next++ : PlacedWeight{position, 0.0};
    if (one.weight == 0.0) {
      order.push_back(one);
    }
  }
  if (order.size() < count) {
    std::erase_if(weights, [](PlacedWeight const& one) { return one.weight >= 0.0; });
    std::stable_sort(weights.begin(), weights.end(), is_heavier);
    order.insert(order.end(), weights.begin(), weights.end());
  }
  return order;
}

}  // namespace morva
