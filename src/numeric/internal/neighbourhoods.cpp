#include "numeric/internal/neighbourhoods.h"

#include "numeric/internal/list_states.h"

namespace morva {

Neighbourhoods::Neighbourhoods(DistanceTable const& table, double limit,
                               DistanceTable::Border border)
    : table_(table), limit_(limit), border_(border) {
  if (FloatLanes const* floats = limit >= 0.0 ? table.floats() : nullptr) {
    floats_.emplace(table, *floats);
  } else if (InvertedIndex const* index = table.index()) {
    inverted_.emplace(table, *index);
  }
}

std::span<std::uint32_t const> Neighbourhoods::of(std::size_t i) {
  if (floats_) {
    return floats_->neighbours(i, limit_, border_);
  }
  if (inverted_) {
    return inverted_->neighbours(i, limit_, border_);
  }
  states_.resize(table_.size() - i);
  table_.within(table_[i], i, limit_, border_, states_);
  near_.clear();
  list_states(std::span<char const>(states_), char{1}, i, near_);
  return near_;
}

}  // namespace morva
