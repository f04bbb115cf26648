#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/export.h"

namespace morvajieba {

/// Which words stand near each word of a text, and how often. Two words are near each other where
/// they are at most `reach` places apart; a word that stands near itself counts from both places.
///
/// Words wait until a batch of them is there, and are counted word by word: all places of one word
/// in a row, with one small array that says how often each other word was met. The time is linear
/// in the text, and the memory goes with the distinct pairs, as a batch grows with those.
class MORVA_EXPORT NeighbourCounts {
 public:
  static constexpr std::size_t reach = 4;
  static constexpr std::size_t usual_batch = std::size_t{1} << 19;

  struct Neighbour {
    std::uint32_t word;
    std::uint32_t count;
    bool operator==(Neighbour const&) const = default;
  };

  /// `batch` is the least number of words that are counted at a time; no result depends on it.
  explicit NeighbourCounts(std::size_t batch = usual_batch) : batch_(batch) {}

  /// Takes the next word of the text. Words are numbers, and memory goes with the greatest of them.
  void add(std::uint32_t word);
  /// Counts the words that still wait. To be called behind the last word of the text.
  void finish() { count_waiting(); }

  /// The neighbours of a word, each once, in no order that means anything. Valid behind `finish`.
  std::span<Neighbour const> of(std::uint32_t word) const;
  /// Sum of the lengths of all rows.
  std::size_t size() const { return ends_.empty() ? 0 : ends_.back(); }

 private:
  static constexpr std::uint32_t nowhere = 0xFFFFFFFF;

  /// A place of the text, and the place before it where the same word stands.
  struct Place {
    std::uint32_t word;
    std::uint32_t before;
  };

  class Tally;

  void count_waiting();
  void count_around(std::uint32_t place, Tally& tally) const;
  void keep_context();

  std::size_t batch_;
  std::vector<Place> places_;        // those that wait, behind the last ones that were counted
  std::size_t counted_ = 0;          // number of places in front that were counted
  std::vector<std::uint32_t> last_;  // per word, its last place
  std::unique_ptr<Neighbour[]> rows_;
  std::vector<std::size_t> ends_;  // per word, where its row ends
};

}  // namespace morvajieba
