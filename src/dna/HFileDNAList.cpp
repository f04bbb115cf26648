#include "dna/HFileDNAList.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "dna/internal/digits.h"

namespace {

// Large enough for a scan, and small enough that a block can grow by copying.
constexpr std::size_t words_in_block = std::size_t{1} << 16U;
constexpr std::size_t rows_at_once = 256;

std::size_t rows_in_block(std::size_t row_size) {
  return std::max<std::size_t>(1, words_in_block / row_size);
}

// The pairs of differing bits and row with the least of both, so many of them.
class Nearest {
 public:
  using Row = std::pair<std::size_t, std::size_t>;

  // Below `limit` bits.
  Nearest(std::size_t count, std::size_t limit) : count_(count), limit_(count == 0 ? 0 : limit) {}

  // Rows come in ascending order.
  void add(std::size_t row, std::size_t differing) {
    if (differing >= limit_) {
      return;
    }
    if (heap_.size() == count_) {
      std::pop_heap(heap_.begin(), heap_.end());
      heap_.pop_back();
    }
    heap_.emplace_back(differing, row);
    std::push_heap(heap_.begin(), heap_.end());
    if (heap_.size() == count_) {
      limit_ = heap_.front().first;
    }
  }

  std::vector<Row> in_order() && {
    std::sort_heap(heap_.begin(), heap_.end());
    return std::move(heap_);
  }

 private:
  std::size_t count_;
  std::size_t limit_;
  std::vector<Row> heap_;
};

// Of the indices below `size` the first that are not among those found, with no similarity, up to
// `count` in all.
void append_unlike(std::vector<HFileDNAFound>& found, std::size_t count, std::size_t size) {
  std::vector<std::size_t> known(found.size());
  std::transform(found.begin(), found.end(), known.begin(),
                 [](HFileDNAFound const& one) { return one.index; });
  std::sort(known.begin(), known.end());
  auto next_known = known.begin();
  for (std::size_t index = 0; index < size && found.size() < count; ++index) {
    if (next_known != known.end() && *next_known == index) {
      ++next_known;
    } else {
      found.push_back({index, 0.0});
    }
  }
}

}  // namespace

HFileDNAList::HFileDNAList() = default;
HFileDNAList::~HFileDNAList() = default;

void HFileDNAList::append(HString const& str_dna) {
  std::wstring_view const digits = text_view(str_dna);
  std::size_t const index = size_++;
  if (digits.empty()) {
    return;
  }
  Shelf& shelf = shelves_[digits.size()];
  std::size_t const row_size = morva::packed_size(digits.size());
  if (shelf.indices.size() % rows_in_block(row_size) == 0) {
    shelf.blocks.emplace_back();
  }
  shelf.indices.push_back(index);
  std::vector<std::uint64_t>& block = shelf.blocks.back();
  block.resize(block.size() + row_size);
  morva::pack_digits(digits, block.data() + block.size() - row_size);
}

std::size_t HFileDNAList::size() const {
  return size_;
}

// Calls `seen` with the row and the number of differing bits of each DNA on the shelf.
template <typename Seen>
void HFileDNAList::compare(std::wstring_view digits, Shelf const& shelf, Seen seen) {
  std::vector<std::uint64_t> row(morva::packed_size(digits.size()));
  morva::pack_digits(digits, row.data());
  std::array<std::size_t, rows_at_once> differing;
  std::size_t first = 0;
  for (std::vector<std::uint64_t> const& block : shelf.blocks) {
    std::size_t const end = first + block.size() / row.size();
    for (std::uint64_t const* rows = block.data(); first < end;) {
      std::size_t const count = std::min(rows_at_once, end - first);
      morva::differing_bits(row, rows, std::span(differing).first(count));
      for (std::size_t i = 0; i < count; ++i) {
        seen(first + i, differing[i]);
      }
      first += count;
      rows += count * row.size();
    }
  }
}

std::vector<HFileDNAFound> HFileDNAList::get_similar(HString const& str_dna,
                                                     double threshold) const {
  std::vector<HFileDNAFound> found;
  bool const all = threshold <= 0.0;
  if (all) {
    append_unlike(found, size_, size_);
  }
  std::wstring_view const digits = text_view(str_dna);
  auto const shelf = shelves_.find(digits.size());
  if (shelf == shelves_.end()) {
    return found;
  }
  std::vector<std::size_t> const& indices = shelf->second.indices;
  std::size_t const limit = morva::too_many_differing(threshold, digits.size());
  compare(digits, shelf->second, [&](std::size_t row, std::size_t differing) {
    if (differing >= limit) {
      return;
    }
    HFileDNAFound const one{indices[row], morva::similarity(differing, digits.size())};
    if (all) {
      found[one.index] = one;
    } else {
      found.push_back(one);
    }
  });
  return found;
}

std::vector<HFileDNAFound> HFileDNAList::get_most_similar(HString const& str_dna,
                                                          std::size_t count) const {
  std::vector<HFileDNAFound> found;
  std::wstring_view const digits = text_view(str_dna);
  auto const shelf = shelves_.find(digits.size());
  if (shelf != shelves_.end()) {
    // Without a bit in common they are as unlike as those of other lengths.
    Nearest nearest(count, morva::bits_per_digit * digits.size());
    compare(digits, shelf->second,
            [&nearest](std::size_t row, std::size_t differing) { nearest.add(row, differing); });
    for (auto const& [differing, row] : std::move(nearest).in_order()) {
      found.push_back({shelf->second.indices[row], morva::similarity(differing, digits.size())});
    }
  }
  append_unlike(found, count, size_);
  return found;
}
