#include "numeric/internal/pair_products.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "numeric/internal/by_column.h"

namespace morva {

namespace {

using Doubles [[gnu::vector_size(64)]] = double;
constexpr std::size_t width = sizeof(Doubles) / sizeof(double);
constexpr std::size_t together = 4;
static_assert(PairProducts::tile % (width * together) == 0);

// A word that one point in so many has is cheaper to multiply for all of them.
constexpr std::size_t common_share = 16;
// What these are spread out to stays in the cache of a core.
constexpr std::size_t most_common = 128;
// How many words ahead memory is asked for.
constexpr std::size_t ahead = 8;
constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

// `sums[k]` becomes the sum over the terms of value * columns[slot][k].
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void
sum_products(std::size_t const* slots, double const* factors, std::size_t count,
             double const* columns, double* sums) {
  for (std::size_t k = 0; k < PairProducts::tile; k += width * together) {
    std::array<Doubles, together> total{};
    for (std::size_t term = 0; term < count; ++term) {
      double const* const from = columns + slots[term] * PairProducts::tile + k;
      for (std::size_t part = 0; part < together; ++part) {
        Doubles values;
        std::memcpy(&values, from + part * width, sizeof values);
        total[part] += factors[term] * values;
      }
    }
    std::memcpy(sums + k, total.data(), sizeof total);
  }
}

}  // namespace

void PairProducts::Terms::clear() {
  starts.assign(1, 0);
  slots.clear();
  values.clear();
}

void PairProducts::Terms::add(std::size_t slot, double value) {
  slots.push_back(slot);
  values.push_back(value);
}

PairProducts::PairProducts(std::span<SparsePoint const> points)
    : points_(points), slots_(column_count(points), none), run_starts_(1), sums_(tile) {
  choose_common();
  std::size_t count = 0;
  for (SparsePoint const& point : points) {
    count += point.values.size();
  }
  places_.reserve(count);
  values_.reserve(count);
  for (std::size_t first = 0; first < points.size(); first += tile) {
    list_tile(points.subspan(first, std::min(tile, points.size() - first)));
  }
}

void PairProducts::choose_common() {
  std::vector<std::uint32_t> counts(slots_.size());
  for (SparsePoint const& point : points_) {
    for (std::uint32_t const column : point.columns) {
      ++counts[column];
    }
  }
  std::vector<std::uint32_t> common;
  for (std::uint32_t column = 0; column < counts.size(); ++column) {
    if (counts[column] > points_.size() / common_share) {
      common.push_back(column);
    }
  }
  std::stable_sort(common.begin(), common.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return counts[a] > counts[b]; });
  common_count_ = std::min(common.size(), most_common);
  for (std::uint32_t slot = 0; slot < common_count_; ++slot) {
    slots_[common[slot]] = slot;
  }
  spread_.resize(common_count_ * tile);
}

void PairProducts::list_tile(std::span<SparsePoint const> points) {
  ByColumn<std::uint16_t> const lists(points, column_count(points));
  auto const before = static_cast<std::uint32_t>(places_.size());
  for (std::uint32_t column = 0; column + 1 < lists.start.size(); ++column) {
    if (lists.start[column] != lists.start[column + 1]) {
      runs_.push_back({column, before + lists.start[column]});
    }
  }
  places_.insert(places_.end(), lists.point.begin(), lists.point.end());
  values_.insert(values_.end(), lists.value.begin(), lists.value.end());
  run_starts_.push_back(runs_.size());
}

void PairProducts::take(Rows rows) {
  for (std::uint32_t const column : rare_) {
    slots_[column] = none;
  }
  rare_.clear();
  common_terms_.clear();
  rare_terms_.clear();
  for (SparsePoint const& point : points_.subspan(rows.begin, rows.size())) {
    add_row(point);
  }
}

void PairProducts::add_row(SparsePoint const& point) {
  for (std::size_t i = 0; i < point.columns.size(); ++i) {
    std::uint32_t& slot = slots_[point.columns[i]];
    if (slot == none) {
      slot = static_cast<std::uint32_t>(common_count_ + rare_.size());
      rare_.push_back(point.columns[i]);
    }
    bool const is_common = slot < common_count_;
    (is_common ? common_terms_ : rare_terms_)
        .add(is_common ? slot : slot - common_count_, point.values[i]);
  }
  common_terms_.starts.push_back(common_terms_.size());
  rare_terms_.starts.push_back(rare_terms_.size());
}

void PairProducts::spread(std::size_t slot, Range range) {
  double* const column = spread_.data() + slot * tile;
  for (std::uint32_t k = range.begin; k < range.end; ++k) {
    column[places_[k]] = values_[k];
  }
}

void PairProducts::move_to(std::size_t first) {
  std::fill(spread_.begin(), spread_.end(), 0.0);
  ranges_.assign(rare_.size(), Range{0, 0});
  std::size_t const number = first / tile;
  std::size_t const end = run_starts_[number + 1];
  for (std::size_t k = run_starts_[number]; k < end; ++k) {
    std::uint32_t const slot = slots_[runs_[k].column];
    if (slot == none) {
      continue;
    }
    auto const values = static_cast<std::uint32_t>(values_.size());
    Range const range{runs_[k].begin, k + 1 < runs_.size() ? runs_[k + 1].begin : values};
    if (slot < common_count_) {
      spread(slot, range);
    } else {
      ranges_[slot - common_count_] = range;
    }
  }
}

std::span<double const> PairProducts::of_row(std::size_t r) {
  std::size_t const common = common_terms_.starts[r];
  sum_products(common_terms_.slots.data() + common, common_terms_.values.data() + common,
               common_terms_.starts[r + 1] - common, spread_.data(), sums_.data());
  std::size_t const begin = rare_terms_.starts[r];
  std::size_t const end = rare_terms_.starts[r + 1];
  double* const sums = sums_.data();
  for (std::size_t term = begin; term < end; ++term) {
    Range const later = ranges_[rare_terms_.slots[std::min(term + ahead, end - 1)]];
    __builtin_prefetch(places_.data() + later.begin);
    __builtin_prefetch(values_.data() + later.begin);
    double const factor = rare_terms_.values[term];
    Range const range = ranges_[rare_terms_.slots[term]];
    for (std::uint32_t k = range.begin; k < range.end; ++k) {
      sums[places_[k]] += factor * values_[k];
    }
  }
  return sums_;
}

}  // namespace morva
