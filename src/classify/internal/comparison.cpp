#include "classify/internal/comparison.h"

#include <bit>
#include <cstdint>

#include "numeric/internal/no_distance.h"

namespace morva {

Comparison::Comparison(HFeatureNode const& node, WeightLists const& lists)
    : lists_(lists.points()), document_(lists.point_of(node)) {}

std::optional<DistanceTable::Found> Comparison::closest() {
  if (!closest_) {
    closest_ = lists_.closest(document_, 0, no_distance);
  }
  return *closest_;
}

std::vector<char> const& Comparison::within(double limit) {
  auto const [entry, is_new] = within_.try_emplace(std::bit_cast<std::uint64_t>(limit));
  if (is_new) {
    entry->second.resize(lists_.size());
    lists_.within(document_, 0, limit, DistanceTable::Border::outside, entry->second);
  }
  return entry->second;
}

}  // namespace morva
