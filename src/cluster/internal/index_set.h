#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morva {

/// A set of indices below a fixed number, one bit each.
class IndexSet {
 public:
  using Word = std::uint32_t;
  static constexpr std::size_t word_bits = 32;
  static std::size_t words_for(std::size_t count) { return (count + word_bits - 1) / word_bits; }
  static Word bit(std::size_t i) { return Word{1} << i % word_bits; }

  /// The empty set.
  explicit IndexSet(std::size_t count) : words_(words_for(count)) {}

  void insert(std::size_t i) { words_[i / word_bits] |= bit(i); }
  void erase(std::size_t i) { words_[i / word_bits] &= ~bit(i); }
  bool contains(std::size_t i) const { return (words_[i / word_bits] & bit(i)) != 0; }
  /// The bits of the indices from `w * word_bits` on.
  Word word(std::size_t w) const { return words_[w]; }

 private:
  std::vector<Word> words_;
};

/// Calls `visit(i)` for each bit that is set, ascending, where the lowest stands for `first`.
template <typename Visit>
void for_each_bit(IndexSet::Word bits, std::size_t first, Visit const& visit) {
  for (; bits != 0; bits &= bits - 1) {
    visit(first + static_cast<std::size_t>(std::countr_zero(bits)));
  }
}

}  // namespace morva
