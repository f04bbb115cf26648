#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/HString.h"

namespace morva {

/// The distinct words of a list in ascending order: tells where any word has its place among them.
class Vocabulary {
 public:
  /// In the order of the words, the one at `rank` or the gap before it.
  struct Place {
    std::uint32_t rank;
    bool is_word;
  };

  /// A list of fewer than 2^31 words.
  explicit Vocabulary(std::span<HString const> words);

  /// The list as it was given.
  std::vector<HString> const& words() const { return words_; }
  /// By rank, the last position of the word in the list.
  std::vector<std::uint32_t> const& positions() const { return positions_; }

  bool contains(HString const& word) const { return place_of(word, 0).is_word; }
  /// The place of a word that does not stand before rank `from`. Logarithmic; few words are looked
  /// at, as numbers made of their first characters lead to them.
  Place place_of(HString const& word, std::uint32_t from) const;

 private:
  HString const& word_at(std::ptrdiff_t rank) const {
    return words_[positions_[static_cast<std::size_t>(rank)]];
  }

  std::vector<HString> words_;
  std::vector<std::uint32_t> positions_;
  std::vector<std::uint64_t> keys_;
};

}  // namespace morva
