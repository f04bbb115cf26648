#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morva {

/// A set of indices below a fixed number, one bit each.
class IndexSet {
 public:
  static constexpr std::size_t word_bits = 64;
  static std::size_t words_for(std::size_t count) { return (count + word_bits - 1) / word_bits; }

  explicit IndexSet(std::size_t count) : words_(words_for(count)) {}

  void insert(std::size_t i) { words_[i / word_bits] |= bit(i); }
  void erase(std::size_t i) { words_[i / word_bits] &= ~bit(i); }
  bool contains(std::size_t i) const { return (words_[i / word_bits] & bit(i)) != 0; }
  std::span<std::uint64_t> words() { return words_; }
  std::span<std::uint64_t const> words() const { return words_; }

  static std::uint64_t bit(std::size_t i) { return std::uint64_t{1} << i % word_bits; }

 private:
  std::vector<std::uint64_t> words_;
};

/// Calls `visit(i)` for each index whose bit is set, ascending, from index `from` on.
template <typename Visit>
void for_each_index(std::span<std::uint64_t const> words, std::size_t from, Visit const& visit) {
  for (std::size_t w = from / IndexSet::word_bits; w < words.size(); ++w) {
    std::uint64_t bits = words[w];
    if (w == from / IndexSet::word_bits) {
      bits &= ~std::uint64_t{0} << from % IndexSet::word_bits;
    }
    for (; bits != 0; bits &= bits - 1) {
      visit(w * IndexSet::word_bits + static_cast<std::size_t>(std::countr_zero(bits)));
    }
  }
}

/// Which points are neighbours of which, one bit for each ordered pair.
class NeighbourMatrix {
 public:
  explicit NeighbourMatrix(std::size_t count)
      : count_(count), row_words_(IndexSet::words_for(count)), words_(row_words_ * count) {}

  std::size_t size() const { return count_; }
  bool has_point(int i) const { return i >= 0 && static_cast<std::size_t>(i) < count_; }
  void join(std::size_t i, std::size_t j) {
    words_[i * row_words_ + j / IndexSet::word_bits] |= IndexSet::bit(j);
    words_[j * row_words_ + i / IndexSet::word_bits] |= IndexSet::bit(i);
  }
  std::span<std::uint64_t const> of(std::size_t i) const {
    return std::span(words_).subspan(i * row_words_, row_words_);
  }
  /// Whether both are points and neighbours.
  bool are_neighbours(int i, int j) const {
    return has_point(i) && has_point(j) &&
           (of(static_cast<std::size_t>(i))[static_cast<std::size_t>(j) / IndexSet::word_bits] &
            IndexSet::bit(static_cast<std::size_t>(j))) != 0;
  }
  /// Number of the neighbours of i that are below `end`.
  std::size_t count_neighbours(std::size_t i, std::size_t end) const {
    std::size_t count = 0;
    std::size_t const whole = end / IndexSet::word_bits;
    for (std::uint64_t const word : of(i).first(whole)) {
      count += static_cast<std::size_t>(std::popcount(word));
    }
    if (end % IndexSet::word_bits != 0) {
      count += static_cast<std::size_t>(std::popcount(of(i)[whole] & (IndexSet::bit(end) - 1)));
    }
    return count;
  }

 private:
  std::size_t count_;
  std::size_t row_words_;
  std::vector<std::uint64_t> words_;
};

}  // namespace morva
