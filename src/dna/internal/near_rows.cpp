#include "dna/internal/near_rows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <numeric>
#include <utility>

#include "dna/internal/digits.h"

namespace morva {

namespace {

constexpr std::size_t rows_at_once = 256;
constexpr std::size_t bits_in_word = 64;

BandPlan plan_for(std::size_t rows, std::size_t row_size, std::size_t most) {
  bool const has_plan =
      row_size == words_in_group && rows <= std::numeric_limits<std::uint32_t>::max();
  return has_plan ? best_plan(rows, most) : BandPlan();
}

// Masks of so many bits, those with fewer bits set first, up to `most_set`.
std::vector<std::uint32_t> masks(std::size_t width, std::size_t most_set) {
  std::vector<std::uint32_t> all;
  for (std::uint32_t mask = 0; mask < std::uint32_t{1} << width; ++mask) {
    if (static_cast<std::size_t>(std::popcount(mask)) <= most_set) {
      all.push_back(mask);
    }
  }
  std::stable_sort(all.begin(), all.end(), [](std::uint32_t a, std::uint32_t b) {
    return std::popcount(a) < std::popcount(b);
  });
  return all;
}

// What has been found of a row so far, and how many rows may still be compared for it.
struct Search {
  std::uint64_t const* rows;
  std::size_t row;
  std::size_t first;
  std::size_t most;
  std::size_t left;
  std::vector<NearRows::Near>& found;
};

// Of rows of one key, last to first, those from `first` on. False where none may be compared any
// more.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("popcnt", "default")]]
#endif
bool
compare(Search& search, std::uint32_t const* begin, std::uint32_t const* end) {
  std::uint64_t const* const mine = search.rows + search.row * words_in_group;
  for (; end != begin && end[-1] >= search.first; --end) {
    if (search.left-- == 0) {
      return false;
    }
    std::uint64_t const* const other = search.rows + std::size_t{end[-1]} * words_in_group;
    int const differing = std::popcount(mine[0] ^ other[0]) + std::popcount(mine[1] ^ other[1]);
    if (auto const bits = static_cast<std::size_t>(differing); bits <= search.most) {
      search.found.push_back({end[-1], bits});
    }
  }
  return true;
}

void put_in_order(std::vector<NearRows::Near>& found) {
  auto const row = [](NearRows::Near const& a, NearRows::Near const& b) { return a.row < b.row; };
  auto const same = [](NearRows::Near const& a, NearRows::Near const& b) { return a.row == b.row; };
  std::sort(found.begin(), found.end(), row);
  found.erase(std::unique(found.begin(), found.end(), same), found.end());
}

}  // namespace

NearRows::NearRows(std::vector<std::uint64_t> rows, std::size_t row_size,
                   std::size_t most_differing, std::optional<BandPlan> const& plan)
    : rows_(std::move(rows)),
      row_size_(row_size),
      size_(rows_.size() / row_size),
      most_(most_differing),
      plan_(plan ? *plan : plan_for(size_, row_size, most_differing)) {
  index();
}

void NearRows::find(std::size_t row, std::size_t first, std::vector<Near>& found) const {
  found.clear();
  if (lookup_cost_ >= static_cast<double>(size_ - first) || !look_up(row, first, found)) {
    found.clear();
    scan(row, first, found);
  }
}

std::uint32_t NearRows::key(std::size_t row, std::size_t first_bit) const {
  std::uint64_t const* const words = rows_.data() + row * row_size_;
  std::size_t const shift = first_bit % bits_in_word;
  std::uint64_t bits = words[first_bit / bits_in_word] >> shift;
  if (shift + plan_.width > bits_in_word) {
    bits |= words[1] << (bits_in_word - shift);
  }
  return static_cast<std::uint32_t>(bits & ((std::uint64_t{1} << plan_.width) - 1));
}

void NearRows::index() {
  if (plan_.bands == 0) {
    lookup_cost_ = std::numeric_limits<double>::infinity();
    return;
  }
  lookup_cost_ = plan_.lookups(most_) * band_cost::lookup;
  differences_ = masks(plan_.width, plan_.radius(0, most_));
  for (std::size_t i = 0; i < plan_.bands; ++i) {
    auto const outside =
        std::upper_bound(differences_.begin(), differences_.end(), plan_.radius(i, most_),
                         [](std::size_t radius, std::uint32_t difference) {
                           return radius < static_cast<std::size_t>(std::popcount(difference));
                         });
    bands_.push_back(
        {plan_.first_bit(i), static_cast<std::size_t>(outside - differences_.begin()), {}, {}});
    index(bands_.back());
  }
}

void NearRows::index(Band& band) const {
  band.begins.resize((std::size_t{1} << plan_.width) + 1);
  for (std::size_t row = 0; row < size_; ++row) {
    ++band.begins[key(row, band.first_bit)];
  }
  // Each becomes the end of its key, and then, counted down, the begin.
  std::partial_sum(band.begins.begin(), band.begins.end(), band.begins.begin());
  band.rows.resize(size_);
  for (std::size_t row = size_; row-- > 0;) {
    band.rows[--band.begins[key(row, band.first_bit)]] = static_cast<std::uint32_t>(row);
  }
}

void NearRows::scan(std::size_t row, std::size_t first, std::vector<Near>& found) const {
  std::span<std::uint64_t const> const words = words_of(row);
  std::array<std::size_t, rows_at_once> differing;
  for (std::size_t count = 0; first < size_; first += count) {
    count = std::min(rows_at_once, size_ - first);
    std::size_t const least =
        differing_bits(words, rows_.data() + first * row_size_, std::span(differing).first(count));
    for (std::size_t i = 0; least <= most_ && i < count; ++i) {
      if (differing[i] <= most_) {
        found.push_back({first + i, differing[i]});
      }
    }
  }
}

// False where so many rows have a key near that of the row that it is cheaper to compare all.
bool NearRows::look_up(std::size_t row, std::size_t first, std::vector<Near>& found) const {
  auto const affordable =
      static_cast<std::size_t>(static_cast<double>(size_ - first) / band_cost::candidate);
  Search search{rows_.data(), row, first, most_, affordable, found};
  for (Band const& band : bands_) {
    std::uint32_t const own = key(row, band.first_bit);
    for (std::size_t i = 0; i < band.lookups; ++i) {
      std::uint32_t const* const begins = band.begins.data() + (own ^ differences_[i]);
      if (!compare(search, band.rows.data() + begins[0], band.rows.data() + begins[1])) {
        return false;
      }
    }
  }
  put_in_order(found);
  return true;
}

}  // namespace morva
