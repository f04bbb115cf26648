#include "numeric/internal/postings.h"

#include <algorithm>
#include <cmath>

#include "numeric/internal/wide.h"

namespace morva {

Postings::Postings(std::span<SparsePoint const> points) {
  start_.assign(column_count(points) + 1, 0);
  for (SparsePoint const& point : points) {
    for (std::uint32_t const column : point.columns) {
      ++start_[column];
    }
  }
  std::uint32_t total = 0;
  for (std::uint32_t& start : start_) {
    total += start;
    start = total;
  }
  point_.resize(total);
  value_.resize(total);
  // From the back, so that each start moves down to the first of its postings.
  for (std::size_t j = points.size(); j-- > 0;) {
    for (std::size_t i = 0; i < points[j].columns.size(); ++i) {
      std::size_t const place = --start_[points[j].columns[i]];
      point_[place] = static_cast<std::uint32_t>(j);
      value_[place] = points[j].values[i];
    }
  }
}

Postings::Range Postings::of_column(std::uint32_t column) const {
  std::size_t const columns = start_.size() - 1;
  if (column >= columns) {
    return {value_.size(), value_.size()};
  }
  return {start_[column], start_[column + 1]};
}

void Postings::add_squares(Range range, std::span<double> out) const {
  for (std::size_t p = range.begin; p < range.end; ++p) {
    out[point_[p]] += value_[p] * value_[p];
  }
}

void Postings::distances(SparsePoint const& x, std::span<double> out) const {
  std::fill(out.begin(), out.end(), 0.0);
  std::vector<double> shared;
  std::size_t next = 0;
  for (std::size_t i = 0; i < x.columns.size(); ++i) {
    double const a = x.values[i];
    Range const range = of_column(x.columns[i]);
    add_squares({next, range.begin}, out);
    next = range.end;
    shared.clear();
    for (std::size_t p = range.begin; p < range.end; ++p) {
      double const difference = a - value_[p];
      shared.push_back(out[point_[p]] + difference * difference);
    }
    wide::add_to_all(a * a, out);
    for (std::size_t p = range.begin; p < range.end; ++p) {
      out[point_[p]] = shared[p - range.begin];
    }
  }
  add_squares({next, value_.size()}, out);
  for (double& sum : out) {
    sum = std::sqrt(sum);
  }
}

void Postings::dots(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  std::fill(out.begin(), out.end(), 0.0);
  auto const from = static_cast<std::uint32_t>(first);
  for (std::size_t i = 0; i < x.columns.size(); ++i) {
    double const a = x.values[i];
    Range const range = of_column(x.columns[i]);
    auto const* const begin = point_.data() + range.begin;
    auto const* const end = point_.data() + range.end;
    auto const* p = first == 0 ? begin : std::lower_bound(begin, end, from);
    double const* value = value_.data() + (p - point_.data());
    for (; p != end; ++p, ++value) {
      out[*p - from] += a * *value;
    }
  }
}

}  // namespace morva
