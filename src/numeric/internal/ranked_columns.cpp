#include "numeric/internal/ranked_columns.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <optional>
#include <utility>

#include "numeric/internal/ascending.h"

namespace morva {

namespace {

// So many columns are taken out of the points at a time: a cache line of each.
constexpr std::size_t columns_at_once = 8;

struct Ranked {
  std::uint64_t key;
  std::uint32_t point;
};

// Sorts by key, byte after byte from the last, with `other` as room; bytes that are the same
// everywhere are passed over.
void sort_by_key(std::vector<Ranked>& items, std::vector<Ranked>& other) {
  constexpr std::size_t bytes = sizeof(std::uint64_t);
  std::array<std::array<std::uint32_t, 256>, bytes> counts{};
  for (Ranked const& item : items) {
    for (std::size_t byte = 0; byte < bytes; ++byte) {
      ++counts[byte][item.key >> 8 * byte & 0xFF];
    }
  }
  other.resize(items.size());
  for (std::size_t byte = 0; byte < bytes; ++byte) {
    auto& places = counts[byte];
    if (places[items.front().key >> 8 * byte & 0xFF] == items.size()) {
      continue;
    }
    std::uint32_t place = 0;
    for (std::uint32_t& start : places) {
      std::uint32_t const count = start;
      start = place;
      place += count;
    }
    for (Ranked const& item : items) {
      other[places[item.key >> 8 * byte & 0xFF]++] = item;
    }
    items.swap(other);
  }
}

// How many values of a set come before its median is known, and whether the next one has a part in
// it.
struct Middle {
  std::uint32_t until_lower;
  bool has_upper;
};

Middle middle_of(std::size_t count) {
  return {static_cast<std::uint32_t>(count / 2 + 1), count % 2 == 0 && count != 2};
}

struct Coordinates {
  std::vector<std::uint32_t> columns;
  std::vector<double> values;

  void append(std::size_t column, double value) {
    if (std::bit_cast<std::uint64_t>(value) != 0) {
      columns.push_back(static_cast<std::uint32_t>(column));
      values.push_back(value);
    }
  }
};

}  // namespace

RankedColumns::RankedColumns(std::span<SparsePoint const> points)
    : points_(points), columns_(column_count(points)), order_(columns_ * points.size()) {
  whole_.reserve(points.size());
  for (SparsePoint const& point : points) {
    whole_.push_back(point.values.size() == columns_ ? point.values.data() : nullptr);
  }
  for (std::size_t column = 0; column < columns_; column += columns_at_once) {
    rank(column);
  }
}

// Ranks the points by the columns from the first on, as many as are taken at once.
void RankedColumns::rank(std::size_t first_column) {
  std::size_t const end = std::min(columns_, first_column + columns_at_once);
  std::array<std::vector<Ranked>, columns_at_once> items;
  for (std::uint32_t j = 0; j < points_.size(); ++j) {
    for (std::size_t column = first_column; column < end; ++column) {
      items[column - first_column].push_back({ascending_key(value(j, column)), j});
    }
  }
  std::vector<Ranked> other;
  for (std::size_t column = first_column; column < end; ++column) {
    std::vector<Ranked>& sorted = items[column - first_column];
    sort_by_key(sorted, other);
    std::transform(sorted.begin(), sorted.end(),
                   order_.begin() + static_cast<std::ptrdiff_t>(column * points_.size()),
                   [](Ranked const& item) { return item.point; });
  }
}

double RankedColumns::value(std::uint32_t point, std::size_t column) const {
  if (whole_[point] != nullptr) {
    return whole_[point][column];
  }
  SparsePoint const& x = points_[point];
  auto const found = std::lower_bound(x.columns.begin(), x.columns.end(), column);
  bool const is_kept = found != x.columns.end() && *found == column;
  return is_kept ? x.values[static_cast<std::size_t>(found - x.columns.begin())] : 0.0;
}

std::vector<SparsePoint> RankedColumns::medians(
    std::vector<std::span<int const>> const& sets) const {
  // What is in no set is in one behind them.
  std::vector<Middle> middles;
  std::vector<std::uint32_t> set_of(points_.size(), static_cast<std::uint32_t>(sets.size()));
  for (std::span<int const> const set : sets) {
    for (int const member : set) {
      set_of[static_cast<std::size_t>(member)] = static_cast<std::uint32_t>(middles.size());
    }
    middles.push_back(middle_of(set.size()));
  }
  std::vector<Coordinates> result(sets.size());
  std::vector<std::uint32_t> left(sets.size() + 1);
  std::vector<std::optional<double>> lower(sets.size());
  for (std::size_t column = 0; column < columns_; ++column) {
    std::transform(middles.begin(), middles.end(), left.begin(),
                   [](Middle const& middle) { return middle.until_lower; });
    left.back() = std::numeric_limits<std::uint32_t>::max();
    for (std::uint32_t const point :
         std::span(order_).subspan(column * points_.size(), points_.size())) {
      std::uint32_t const set = set_of[point];
      if (--left[set] != 0) {
        continue;
      }
      double const reached = value(point, column);
      if (middles[set].has_upper && !lower[set]) {
        lower[set] = reached;
        left[set] = 1;
        continue;
      }
      result[set].append(column, lower[set] ? 0.5 * (*lower[set] + reached) : reached);
      lower[set].reset();
    }
  }
  std::vector<SparsePoint> medians;
  medians.reserve(sets.size());
  for (Coordinates& coordinates : result) {
    medians.emplace_back(points_.front().n, std::move(coordinates.columns),
                         std::move(coordinates.values));
  }
  return medians;
}

}  // namespace morva
