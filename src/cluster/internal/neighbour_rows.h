#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/index_set.h"

namespace morva {

/// Which points are neighbours of which, of each pair once: a row for each point, with its
/// neighbours among itself and the points behind it, or among the points before it.
///
/// A row is kept as a list, of four bytes a neighbour, or as one bit for each point that it can
/// hold, whichever is smaller. All rows together take four bytes for each pair of neighbours and
/// twelve for each point; where all points are neighbours of all, one bit for each pair of points.
/// As long as rows are added, up to twice as much.
class NeighbourRows {
 public:
  enum class Side { from_itself, before };
  /// `smaller` is told of each row by itself.
  enum class Form { smaller, lists, bits };

  /// Of so many points, fewer than 2^32, as yet without rows, which are from the point itself on.
  explicit NeighbourRows(std::size_t count, Form form = Form::smaller);

  /// Number of the points.
  std::size_t size() const { return count_; }
  /// Adds the row of the next point: ascending, from the point itself on, each below `size()`.
  void append(std::span<std::uint32_t const> row);
  /// The same pairs, each in the row of its other point, without those of a point and itself. All
  /// rows have been added. After Warren, "Hacker's Delight", section 7-3, where rows are bits.
  NeighbourRows before() const;

  /// Logarithmic at most.
  bool contains(std::size_t i, std::size_t j) const;
  /// Number of the neighbours below `end`.
  std::size_t count_below(std::size_t i, std::size_t end) const;
  /// Whether one of the neighbours is in a set of as many indices.
  bool meets(std::size_t i, IndexSet const& set) const;
  /// Calls `visit(j)` for each neighbour, ascending.
  template <typename Visit>
  void for_each(std::size_t i, Visit const& visit) const;
  /// The same for those in a set of as many indices, of which `visit` may erase j.
  template <typename Visit>
  void for_each_in(std::size_t i, IndexSet const& set, Visit const& visit) const;

 private:
  NeighbourRows(std::size_t count, Side side, Form form)
      : count_(count), side_(side), form_(form), begins_(1) {}

  std::size_t first_word(std::size_t i) const {
    return side_ == Side::before ? 0 : i / IndexSet::word_bits;
  }
  std::size_t word_count(std::size_t i) const {
    return IndexSet::words_for(side_ == Side::before ? i : count_) - first_word(i);
  }
  std::span<std::uint32_t const> cells(std::size_t i) const {
    return std::span(cells_).subspan(begins_[i], begins_[i + 1] - begins_[i]);
  }
  bool is_bits(std::size_t i) const {
    return form_ == Form::bits ||
           (form_ == Form::smaller && begins_[i + 1] - begins_[i] == word_count(i));
  }
  bool add_row(std::size_t neighbours);
  bool holds_bits(std::size_t begin, std::size_t end) const;
  template <typename Visit>
  void for_each_turned(Visit const& visit) const;
  template <typename Visit>
  void turn_bits(std::size_t begin, std::size_t end, Visit const& visit) const;

  std::size_t count_;
  Side side_;
  Form form_;
  // Lists, which are shorter than their bits would be, and bits.
  std::vector<std::uint32_t> cells_;
  std::vector<std::size_t> begins_;
  // Of each point, the rows before its own that it is in.
  std::vector<std::uint32_t> uses_;
};

template <typename Visit>
void NeighbourRows::for_each(std::size_t i, Visit const& visit) const {
  auto const row = cells(i);
  if (!is_bits(i)) {
    for (std::uint32_t const j : row) {
      visit(std::size_t{j});
    }
    return;
  }
  std::size_t first = first_word(i) * IndexSet::word_bits;
  for (IndexSet::Word const bits : row) {
    for_each_bit(bits, first, visit);
    first += IndexSet::word_bits;
  }
}

template <typename Visit>
void NeighbourRows::for_each_in(std::size_t i, IndexSet const& set, Visit const& visit) const {
  auto const row = cells(i);
  if (!is_bits(i)) {
    for (std::uint32_t const j : row) {
      if (set.contains(j)) {
        visit(std::size_t{j});
      }
    }
    return;
  }
  std::size_t w = first_word(i);
  for (IndexSet::Word const bits : row) {
    for_each_bit(bits & set.word(w), w * IndexSet::word_bits, visit);
    ++w;
  }
}

}  // namespace morva
