#include "numeric/internal/lanes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numeric/internal/wide.h"

namespace morva {

namespace {

using wide::lanes;
using wide::rows_together;

// Coordinates from index 0 on, as many as the groups have columns or more; copied where the point
// leaves some out.
class Row {
 public:
  Row(Row const&) = delete;
  Row(Row&&) = default;
  Row& operator=(Row const&) = delete;
  Row& operator=(Row&&) = default;
  ~Row() = default;
  Row(SparsePoint const& x, std::size_t columns) : values_(x.values) {
    bool const is_whole = x.columns.empty() || x.columns.back() + 1 == x.columns.size();
    if (is_whole && x.values.size() >= columns) {
      return;
    }
    copy_.resize(std::max(columns, column_count({&x, 1})));
    for (std::size_t i = 0; i < x.columns.size(); ++i) {
      copy_[x.columns[i]] = x.values[i];
    }
    values_ = copy_;
  }

  double const* data() const { return values_.data(); }
  /// What lies behind the columns of the groups, whose points have zeros there.
  std::span<double const> behind(std::size_t columns) const { return values_.subspan(columns); }

 private:
  std::vector<double> copy_;
  std::span<double const> values_;
};

void finish_distances(Row const& row, std::size_t columns, std::span<double> out) {
  for (double const a : row.behind(columns)) {
    wide::add_to_all(a * a, out);
  }
  wide::take_roots(out);
}

// Copies the lanes of a tile that begins at point `start`, for points from `first` on, as far as
// `out` goes.
void copy_lanes(std::span<double const> sums, std::size_t start, std::size_t first,
                std::span<double> out) {
  std::size_t const from = std::max(start, first);
  std::size_t const end = std::min(start + sums.size(), first + out.size());
  std::copy(sums.begin() + static_cast<std::ptrdiff_t>(from - start),
            sums.begin() + static_cast<std::ptrdiff_t>(end - start),
            out.begin() + static_cast<std::ptrdiff_t>(from - first));
}

using SumGroups = void (*)(double const* row, wide::Column const* groups, std::size_t columns,
                           wide::Tile& sums);

// One row against tile after tile.
void sweep(double const* row, wide::Column const* groups, std::size_t columns, SumGroups sum,
           std::size_t first, std::span<double> out) {
  wide::Tile sums;
  std::size_t const end = first + out.size();
  for (std::size_t start = first / sums.size() * sums.size(); start < end; start += sums.size()) {
    sum(row, groups + start / lanes * columns, columns, sums);
    copy_lanes(sums, start, first, out);
  }
}

}  // namespace

Lanes::Lanes(std::span<SparsePoint const> points) : columns_(column_count(points)) {
  groups_.resize(padded(points.size()) / lanes * columns_);
  for (std::size_t j = 0; j < points.size(); ++j) {
    wide::Column* const group = groups_.data() + j / lanes * columns_;
    for (std::size_t i = 0; i < points[j].columns.size(); ++i) {
      group[points[j].columns[i]].values[j % lanes] = points[j].values[i];
    }
  }
}

void Lanes::distances(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  Row const row(x, columns_);
  sweep(row.data(), groups_.data(), columns_, wide::square_differences, first, out);
  finish_distances(row, columns_, out);
}

void Lanes::distances(std::span<SparsePoint const> points, std::size_t first,
                      std::span<double> out) const {
  std::vector<Row> rows;
  for (SparsePoint const& point : points) {
    rows.emplace_back(point, columns_);
  }
  std::size_t const count = out.size() / rows.size();
  wide::Tile sums;
  for (std::size_t start = first / lanes * lanes; start < first + count; start += lanes) {
    for (std::size_t r = 0; r < rows.size(); r += rows_together) {
      // Behind the last row it is measured again.
      std::array<double const*, rows_together> together;
      for (std::size_t i = 0; i < rows_together; ++i) {
        together[i] = rows[std::min(r + i, rows.size() - 1)].data();
      }
      wide::square_differences(together, groups_.data() + start / lanes * columns_, columns_, sums);
      for (std::size_t i = r; i < std::min(r + rows_together, rows.size()); ++i) {
        copy_lanes(std::span<double const>(sums).subspan((i - r) * lanes, lanes), start, first,
                   out.subspan(i * count, count));
      }
    }
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    finish_distances(rows[i], columns_, out.subspan(i * count, count));
  }
}

void Lanes::dots(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  sweep(Row(x, columns_).data(), groups_.data(), columns_, wide::products, first, out);
}

}  // namespace morva
