#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace reference {

/// Words by descending weight in the plainest way: passes over the list that exchange neighbours
/// where the left weight is strictly less, each pass one shorter than the one before.
template <typename Word>
void bubble_sort(std::vector<std::pair<Word, double>>& list) {
  for (std::size_t pass = 0; pass + 1 < list.size(); ++pass) {
    for (std::size_t j = 0; j + 1 < list.size() - pass; ++j) {
      if (list[j].second < list[j + 1].second) {
        std::swap(list[j], list[j + 1]);
      }
    }
  }
}

}  // namespace reference
