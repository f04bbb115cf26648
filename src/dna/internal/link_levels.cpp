#include "dna/internal/link_levels.h"

#include <algorithm>
#include <numeric>

namespace morva {

LinkLevels::LinkLevels(std::size_t nodes, std::size_t levels)
    : nodes_(nodes), levels_(levels), parents_(nodes * levels) {
  for (std::size_t level = 0; level < levels; ++level) {
    auto const first = parents_.begin() + static_cast<std::ptrdiff_t>(level * nodes);
    std::iota(first, first + static_cast<std::ptrdiff_t>(nodes), 0U);
  }
}

void LinkLevels::link(std::size_t a, std::size_t b, std::size_t level) {
  for (; level < levels_; ++level) {
    std::uint32_t const first = root(level, static_cast<std::uint32_t>(a));
    std::uint32_t const second = root(level, static_cast<std::uint32_t>(b));
    if (first == second) {
      // They are so at the levels above too.
      return;
    }
    parents_[level * nodes_ + std::max(first, second)] = std::min(first, second);
  }
}

std::size_t LinkLevels::leader(std::size_t node) {
  return root(levels_ - 1, static_cast<std::uint32_t>(node));
}

std::size_t LinkLevels::level_to_leader(std::size_t node) {
  auto const from = static_cast<std::uint32_t>(node);
  auto const to = static_cast<std::uint32_t>(leader(node));
  std::size_t low = 0;
  for (std::size_t high = levels_ - 1; low < high;) {
    std::size_t const middle = low + (high - low) / 2;
    if (root(middle, from) == root(middle, to)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

std::uint32_t LinkLevels::root(std::size_t level, std::uint32_t node) {
  std::uint32_t* const parents = parents_.data() + level * nodes_;
  while (parents[node] != node) {
    parents[node] = parents[parents[node]];
    node = parents[node];
  }
  return node;
}

}  // namespace morva
