#pragma once

#include <array>
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
  constexpr std::size_t together = sizeof(std::uint64_t);
  std::uint64_t const each_wanted = 0x0101010101010101 * static_cast<unsigned char>(wanted);
  std::size_t k = 0;
  for (; k + together <= states.size(); k += together) {
    std::uint64_t several;
    std::memcpy(&several, states.data() + k, together);
    if ((several & each_wanted) == 0) {
      continue;
    }
    // Without a branch for each state, which could not be foretold.
    std::array<Place, together> places;
    std::size_t count = 0;
    for (std::size_t at = k; at < k + together; ++at) {
      places[count] = static_cast<Place>(first + at);
      count += states[at] == wanted ? 1U : 0U;
    }
    list.insert(list.end(), places.begin(), places.begin() + static_cast<std::ptrdiff_t>(count));
  }
  for (; k < states.size(); ++k) {
    if (states[k] == wanted) {
      list.push_back(static_cast<Place>(first + k));
    }
  }
}

}  // namespace morva
