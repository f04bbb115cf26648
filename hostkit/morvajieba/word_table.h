#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"

namespace morvajieba {

/// Order of code points as unsigned values, a proper prefix first.
bool is_before(std::wstring_view left, std::wstring_view right);

/// The first three characters of a text as one number of 63 bits: where two texts differ in it,
/// their order is that of the numbers.
std::uint64_t pack_start(std::wstring_view text);

/// Gives each distinct word a number, from 0 on in the order of their first appearance, and counts
/// them.
class MORVA_EXPORT WordTable {
 public:
  /// Number of a word, which is counted once more; a new word has count 1 afterwards.
  std::uint32_t add(std::wstring_view text);
  bool contains(std::wstring_view text) const;

  std::size_t size() const { return counts_.size(); }
  std::uint32_t count(std::uint32_t number) const { return counts_[number]; }
  std::wstring_view text(std::uint32_t number) const {
    return std::wstring_view(texts_).substr(places_[number].offset, places_[number].length);
  }

 private:
  struct Place {
    std::size_t offset;
    std::size_t length;
  };
  /// A place of the hash table. The key is the word itself where it has at most three characters,
  /// so that most words are found with one look at memory; else it is a hash.
  struct Slot {
    std::uint64_t key;
    std::uint32_t number;  // + 1, so that 0 is a free slot
  };

  /// The slot where a word is, or the free one where it would be.
  std::size_t find_slot(std::wstring_view text, std::uint64_t key) const;
  void grow();

  std::wstring texts_;
  std::vector<Place> places_;          // of the words in it
  std::vector<std::uint32_t> counts_;  // apart from the places, which a known short word needs not
  std::vector<Slot> slots_;
};

}  // namespace morvajieba
