#include "cluster/internal/neighbour_rows.h"

#include <algorithm>
#include <bit>

namespace morva {

NeighbourRows::NeighbourRows(std::size_t count, Form form)
    : NeighbourRows(count, Side::from_itself, form) {}

// Begins the next row behind the last, as yet without room for it. Whether it is a list.
bool NeighbourRows::add_row(std::size_t neighbours) {
  std::size_t const i = begins_.size() - 1;
  std::size_t const words = word_count(i);
  bool const is_list = form_ == Form::lists || (form_ == Form::smaller && neighbours < words);
  begins_.push_back(begins_.back() + (is_list ? neighbours : words));
  return is_list;
}

void NeighbourRows::append(std::span<std::uint32_t const> row) {
  std::size_t const i = begins_.size() - 1;
  bool const is_list = add_row(row.size());
  cells_.resize(begins_.back());
  auto const place = std::span(cells_).subspan(begins_[i]);
  if (is_list) {
    std::copy(row.begin(), row.end(), place.begin());
    return;
  }
  for (std::uint32_t const j : row) {
    place[j / IndexSet::word_bits - first_word(i)] |= IndexSet::bit(j);
  }
}

NeighbourRows NeighbourRows::before() const {
  std::vector<std::uint32_t> missing(count_);
  for (std::size_t i = 0; i < count_; ++i) {
    for_each(i, [&](std::size_t j) { missing[j] += j != i ? 1U : 0U; });
  }
  NeighbourRows result(count_, Side::before, form_);
  result.begins_.reserve(count_ + 1);
  for (std::size_t j = 0; j < count_; ++j) {
    result.add_row(missing[j]);
  }
  result.cells_.resize(result.begins_.back());
  for (std::size_t i = 0; i < count_; ++i) {
    for_each(i, [&](std::size_t j) {
      if (j == i) {
        return;
      }
      if (result.is_bits(j)) {
        result.cells_[result.begins_[j] + i / IndexSet::word_bits] |= IndexSet::bit(i);
      } else {
        result.cells_[result.begins_[j + 1] - missing[j]--] = static_cast<std::uint32_t>(i);
      }
    });
  }
  return result;
}

bool NeighbourRows::contains(std::size_t i, std::size_t j) const {
  auto const row = cells(i);
  if (!is_bits(i)) {
    return std::binary_search(row.begin(), row.end(), j);
  }
  std::size_t const w = j / IndexSet::word_bits - first_word(i);
  return j / IndexSet::word_bits >= first_word(i) && w < row.size() &&
         (row[w] & IndexSet::bit(j)) != 0;
}

std::size_t NeighbourRows::count_below(std::size_t i, std::size_t end) const {
  auto const row = cells(i);
  if (!is_bits(i)) {
    return static_cast<std::size_t>(std::lower_bound(row.begin(), row.end(), end) - row.begin());
  }
  std::size_t count = 0;
  std::size_t first = first_word(i) * IndexSet::word_bits;
  for (IndexSet::Word bits : row) {
    if (first + IndexSet::word_bits > end) {
      bits &= first < end ? IndexSet::bit(end) - 1 : 0;
    }
    count += static_cast<std::size_t>(std::popcount(bits));
    first += IndexSet::word_bits;
  }
  return count;
}

bool NeighbourRows::meets(std::size_t i, IndexSet const& set) const {
  auto const row = cells(i);
  if (!is_bits(i)) {
    return std::any_of(row.begin(), row.end(), [&set](std::size_t j) { return set.contains(j); });
  }
  std::size_t w = first_word(i);
  return std::any_of(row.begin(), row.end(),
                     [&](IndexSet::Word bits) { return (bits & set.word(w++)) != 0; });
}

}  // namespace morva
