#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace morvajieba {

/// A random number of the process.
extern std::uint64_t const process_number;

/// Scatters a key over a hash table. The document decides the keys, so that each process scatters
/// them in its own way: no document can fill one spot of a table. No result depends on it.
inline std::uint64_t scatter(std::uint64_t key) {
  key = (key ^ process_number) * 0xBF58476D1CE4E5B9u;
  key = (key ^ key >> 31) * 0x94D049BB133111EBu;
  return key ^ key >> 29;
}

/// Order of code points as unsigned values, a proper prefix first.
bool is_before(std::wstring_view left, std::wstring_view right);

/// Gives each distinct word a number, from 0 on in the order of their first appearance, and counts
/// them.
class WordTable {
 public:
  struct Word {
    std::size_t offset;
    std::uint32_t length;
    std::uint32_t count;
    std::uint32_t hash;
    /// For the owner of the table to set on a new word.
    bool is_stop_word;
  };

  /// Number of a word, which is counted once more; a new word has count 1 afterwards.
  std::uint32_t add(std::wstring_view text);

  std::size_t size() const { return words_.size(); }
  Word& word(std::uint32_t number) { return words_[number]; }
  Word const& word(std::uint32_t number) const { return words_[number]; }
  std::wstring_view text(std::uint32_t number) const {
    return std::wstring_view(texts_).substr(words_[number].offset, words_[number].length);
  }

 private:
  void grow();

  std::wstring texts_;
  std::vector<Word> words_;
  std::vector<std::uint32_t> slots_;  // number + 1 of a word, 0 for a free slot
};

}  // namespace morvajieba
