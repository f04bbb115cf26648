#include "numeric/internal/told_neighbours.h"

#include <algorithm>
#include <functional>

#include "numeric/internal/division.h"
#include "numeric/internal/index_set.h"

namespace morva {

namespace {

// Beside the length of a row: that bits follow.
constexpr std::uint32_t as_bits = std::uint32_t{1} << 31;

}  // namespace

void ToldNeighbours::tell(std::size_t i, std::span<std::uint32_t const> near,
                          std::vector<std::uint32_t>& message) const {
  auto const length = static_cast<std::uint32_t>(near.size());
  std::size_t const words = IndexSet::words_for(size_ - i);
  if (near.size() <= words) {
    message.push_back(length);
    message.insert(message.end(), near.begin(), near.end());
    return;
  }
  message.push_back(length | as_bits);
  message.resize(message.size() + words);
  auto const bits = std::span(message).last(words);
  for (std::uint32_t const j : near) {
    bits[(j - i) / IndexSet::word_bits] |= IndexSet::bit(j - i);
  }
}

std::span<std::uint32_t const> ToldNeighbours::hear(std::size_t i,
                                                    std::span<std::uint32_t const>& message) {
  Division::expect_same(i < size_ && !message.empty());
  bool const is_bits = (message.front() & as_bits) != 0;
  std::size_t const length = message.front() & ~as_bits;
  std::size_t const cells = is_bits ? IndexSet::words_for(size_ - i) : length;
  Division::expect_same(cells < message.size());
  auto near = message.subspan(1, cells);
  message = message.subspan(1 + cells);
  if (is_bits) {
    near_.clear();
    for (std::size_t w = 0; w < near.size(); ++w) {
      for_each_bit(near[w], i + w * IndexSet::word_bits,
                   [this](std::size_t j) { near_.push_back(static_cast<std::uint32_t>(j)); });
    }
    near = near_;
  }
  bool const is_ascending =
      std::adjacent_find(near.begin(), near.end(), std::greater_equal<>()) == near.end();
  Division::expect_same(near.size() == length && is_ascending &&
                        (near.empty() || (near.front() >= i && near.back() < size_)));
  return near;
}

}  // namespace morva
