#include "cluster/internal/neighbour_rows.h"

#include <algorithm>
#include <array>
#include <bit>

namespace morva {

namespace {

using BitSquare = std::array<IndexSet::Word, IndexSet::word_bits>;

// Exchanges rows and columns, where column k of a row is bit k: squares that lie aslant of each
// other change places, ever smaller ones.
void transpose(BitSquare& square) {
  IndexSet::Word low = 0x0000FFFF;
  for (std::size_t side = 16; side != 0; side /= 2, low ^= low << side) {
    for (std::size_t r = 0; r < square.size(); r = (r + side + 1) & ~side) {
      IndexSet::Word const differing = (square[r] >> side ^ square[r + side]) & low;
      square[r] ^= differing << side;
      square[r + side] ^= differing;
    }
  }
}

}  // namespace

NeighbourRows::NeighbourRows(std::size_t count, Form form)
    : NeighbourRows(count, Side::from_itself, form) {
  uses_.resize(count);
}

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
  }
  for (std::uint32_t const j : row) {
    ++uses_[j];
    if (!is_list) {
      place[j / IndexSet::word_bits - first_word(i)] |= IndexSet::bit(j);
    }
  }
  if (!row.empty() && row.front() == i) {
    --uses_[i];
  }
  if (i + 1 == count_) {
    cells_.shrink_to_fit();
  }
}

NeighbourRows NeighbourRows::before() const {
  NeighbourRows result(count_, Side::before, form_);
  result.begins_.reserve(count_ + 1);
  for (std::size_t j = 0; j < count_; ++j) {
    result.add_row(uses_[j]);
  }
  result.cells_.resize(result.begins_.back());
  std::vector<std::uint32_t> missing = uses_;
  for_each_turned([&](std::size_t j, std::size_t w, IndexSet::Word rows) {
    if (result.is_bits(j)) {
      result.cells_[result.begins_[j] + w] |= rows;
      return;
    }
    for_each_bit(rows, w * IndexSet::word_bits, [&](std::size_t i) {
      result.cells_[result.begins_[j + 1] - missing[j]--] = static_cast<std::uint32_t>(i);
    });
  });
  return result;
}

// Calls `visit(j, w, rows)` for points j, such that its calls for one of them tell, ascending, the
// rows that it is in: those of word w whose bits are set. A point's own row is left out.
template <typename Visit>
void NeighbourRows::for_each_turned(Visit const& visit) const {
  for (std::size_t begin = 0; begin < count_; begin += IndexSet::word_bits) {
    std::size_t const w = begin / IndexSet::word_bits;
    std::size_t const end = std::min(begin + IndexSet::word_bits, count_);
    if (holds_bits(begin, end)) {
      turn_bits(begin, end, visit);
      continue;
    }
    for (std::size_t i = begin; i < end; ++i) {
      for_each(i, [&](std::size_t j) {
        if (j != i) {
          visit(j, w, IndexSet::bit(i));
        }
      });
    }
  }
}

bool NeighbourRows::holds_bits(std::size_t begin, std::size_t end) const {
  for (std::size_t i = begin; i < end; ++i) {
    if (is_bits(i)) {
      return true;
    }
  }
  return false;
}

// The same for the rows of one word, of which some are bits: a square of bits at a time.
template <typename Visit>
void NeighbourRows::turn_bits(std::size_t begin, std::size_t end, Visit const& visit) const {
  std::size_t const w = begin / IndexSet::word_bits;
  std::size_t const width = word_count(begin);
  std::vector<IndexSet::Word> rows(IndexSet::word_bits * width);
  for (std::size_t i = begin; i < end; ++i) {
    auto const row = std::span(rows).subspan((i - begin) * width, width);
    for_each(i, [&](std::size_t j) {
      if (j != i) {
        row[j / IndexSet::word_bits - w] |= IndexSet::bit(j);
      }
    });
  }
  for (std::size_t c = 0; c < width; ++c) {
    BitSquare square;
    for (std::size_t r = 0; r < square.size(); ++r) {
      square[r] = rows[r * width + c];
    }
    transpose(square);
    for (std::size_t k = 0; k < square.size(); ++k) {
      if (square[k] != 0) {
        visit((w + c) * IndexSet::word_bits + k, w, square[k]);
      }
    }
  }
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
