#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace morva {

/// Calls `visit(i)` for each bit that is set, ascending, where the lowest stands for `first`.
template <std::unsigned_integral Word, typename Visit>
void for_each_bit(Word bits, std::size_t first, Visit const& visit) {
  for (; bits != 0; bits &= bits - 1) {
    visit(first + static_cast<std::size_t>(std::countr_zero(bits)));
  }
}

/// A set of indices below a number, one bit each, in words of which a walk passes over empty ones.
template <std::unsigned_integral W>
class IndexSetOf {
 public:
  using Word = W;
  static constexpr std::size_t word_bits = std::numeric_limits<Word>::digits;
  static constexpr std::size_t words_for(std::size_t count) {
    return (count + word_bits - 1) / word_bits;
  }
  static constexpr Word bit(std::size_t i) { return Word{1} << i % word_bits; }

  /// The empty set, for indices below the number.
  explicit IndexSetOf(std::size_t count = 0) : words_(words_for(count)) {}

  /// The number that indices are below, in whole words; `make_room_for` makes it greater than i.
  std::size_t room() const { return words_.size() * word_bits; }
  void make_room_for(std::size_t i) {
    if (i >= room()) {
      words_.resize(i / word_bits + 1);
    }
  }
  void clear() { std::fill(words_.begin(), words_.end(), Word{0}); }

  void insert(std::size_t i) { words_[i / word_bits] |= bit(i); }
  void erase(std::size_t i) { words_[i / word_bits] &= ~bit(i); }
  bool contains(std::size_t i) const { return (words_[i / word_bits] & bit(i)) != 0; }
  /// The bits of the indices from `w * word_bits` on.
  Word word(std::size_t w) const { return words_[w]; }

  /// Calls `visit(i)` for each index, ascending.
  template <typename Visit>
  void for_each(Visit const& visit) const {
    for (std::size_t w = 0; w < words_.size(); ++w) {
      for_each_bit(words_[w], w * word_bits, visit);
    }
  }
  /// The same for a set of which none is below `first`, which becomes empty.
  template <typename Visit>
  void take_each(std::size_t first, Visit const& visit) {
    for (std::size_t w = first / word_bits; w < words_.size(); ++w) {
      for_each_bit(std::exchange(words_[w], Word{0}), w * word_bits, visit);
    }
  }

 private:
  std::vector<Word> words_;
};

/// In cells as small as an index, beside which they can stand.
using IndexSet = IndexSetOf<std::uint32_t>;
/// In few words, for walks over all.
using WideIndexSet = IndexSetOf<std::uint64_t>;

}  // namespace morva
