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

/// The first three characters of a word as one number, in the order of `is_before`.
class WordStart {
 public:
  explicit WordStart(std::wstring_view text);

  std::uint64_t number() const { return number_; }
  /// Whether the number and the length say all of the word: no character is left, and none is
  /// beyond what the number holds. Those, which are no code points, all look the same in it.
  bool is_all() const { return is_all_; }

 private:
  std::uint64_t number_ = 0;
  bool is_all_;
};

/// Gives each distinct word a number, from 0 on in the order of their first appearance, and counts
/// them.
class MORVA_EXPORT WordTable {
 public:
  struct Word {
    std::uint64_t start;  // as of `WordStart`
    std::size_t offset;
    std::uint32_t length;
    std::uint32_t count;
    /// For the owner of the table to set on a new word.
    bool is_stop_word;
  };

  /// Number of a word, which is counted once more; a new word has count 1 afterwards.
  std::uint32_t add(std::wstring_view text);
  bool contains(std::wstring_view text) const;

  std::size_t size() const { return words_.size(); }
  Word& word(std::uint32_t number) { return words_[number]; }
  Word const& word(std::uint32_t number) const { return words_[number]; }
  std::wstring_view text(std::uint32_t number) const {
    return std::wstring_view(texts_).substr(words_[number].offset, words_[number].length);
  }

 private:
  /// A place of the hash table. The hash stands here so that a word is looked at only where it is
  /// most likely the right one.
  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // + 1, so that 0 is a free slot
  };

  /// The slot where a word is, or the free one where it would be.
  std::size_t find_slot(std::wstring_view text, WordStart const& start, std::uint32_t hash) const;
  void grow();

  std::wstring texts_;
  std::vector<Word> words_;
  std::vector<Slot> slots_;
};

}  // namespace morvajieba
