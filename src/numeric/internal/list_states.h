#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace morva {

/// Appends the place of each state that is `wanted`, ascending, to a list, where the first state is
/// at place `first`. States are 0 or have one bit, and most of them are others.
template <typename Place>
void list_states(std::span<char const> states, char wanted, std::size_t first,
                 std::vector<Place>& list) {
  auto const list_one = [&](std::size_t k) {
    if (states[k] == wanted) {
      list.push_back(static_cast<Place>(first + k));
    }
  };
  std::uint64_t const each_wanted = 0x0101010101010101 * static_cast<unsigned char>(wanted);
  std::size_t k = 0;
  for (; k + sizeof(std::uint64_t) <= states.size(); k += sizeof(std::uint64_t)) {
    std::uint64_t several;
    std::memcpy(&several, states.data() + k, sizeof several);
    if ((several & each_wanted) != 0) {
      for (std::size_t at = k; at < k + sizeof several; ++at) {
        list_one(at);
      }
    }
  }
  for (; k < states.size(); ++k) {
    list_one(k);
  }
}

}  // namespace morva
