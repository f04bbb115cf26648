#include "dna/internal/dna_shelf.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

#include "dna/internal/digits.h"

namespace morva {

namespace {

using Words = std::span<std::uint64_t const>;

bool is_equal(Words a, Words b) {
  return std::equal(a.begin(), a.end(), b.begin());
}

// The positions of rows of words, equal ones behind each other in ascending order.
std::vector<std::size_t> equal_together(std::vector<std::uint64_t> const& words, std::size_t size) {
  std::vector<std::size_t> order(words.size() / size);
  std::iota(order.begin(), order.end(), std::size_t{0});
  auto const row = [&](std::size_t i) { return Words(words).subspan(i * size, size); };
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    Words const first = row(a);
    Words const second = row(b);
    auto const [at, other] = std::mismatch(first.begin(), first.end(), second.begin());
    return at == first.end() ? a < b : *at < *other;
  });
  return order;
}

}  // namespace

DnaShelf::DnaShelf(std::vector<HString> const& dnas, std::vector<std::size_t> indices,
                   std::size_t digits)
    : digits_(digits) {
  std::size_t const size = row_size();
  std::vector<std::uint64_t> packed(indices.size() * size);
  for (std::size_t i = 0; i < indices.size(); ++i) {
    pack_digits(text_view(dnas[indices[i]]), packed.data() + i * size);
  }
  std::vector<std::size_t> const order = equal_together(packed, size);
  auto const row = [&](std::size_t i) { return Words(packed).subspan(order[i] * size, size); };
  // Begin and end of each run of equal ones, in the order of the last one.
  std::vector<std::pair<std::size_t, std::size_t>> runs;
  for (std::size_t begin = 0, end = 0; begin < order.size(); begin = end) {
    while (end < order.size() && is_equal(row(begin), row(end))) {
      ++end;
    }
    runs.emplace_back(begin, end);
  }
  std::sort(runs.begin(), runs.end(), [&](auto const& a, auto const& b) {
    return order[a.second - 1] < order[b.second - 1];
  });
  begins_.push_back(0);
  for (auto const& [begin, end] : runs) {
    Words const words = row(begin);
    words_.insert(words_.end(), words.begin(), words.end());
    for (std::size_t i = begin; i < end; ++i) {
      indices_.push_back(indices[order[i]]);
    }
    begins_.push_back(indices_.size());
  }
}

std::size_t DnaShelf::row_size() const {
  return packed_size(digits_);
}

std::vector<DnaShelf> dna_shelves(std::vector<HString> const& dnas) {
  std::map<std::size_t, std::vector<std::size_t>> by_length;
  for (std::size_t i = 0; i < dnas.size(); ++i) {
    if (dnas[i].not_empty()) {
      by_length[dnas[i].size()].push_back(i);
    }
  }
  std::vector<DnaShelf> shelves;
  shelves.reserve(by_length.size());
  for (auto& [digits, indices] : by_length) {
    shelves.emplace_back(dnas, std::move(indices), digits);
  }
  return shelves;
}

}  // namespace morva
