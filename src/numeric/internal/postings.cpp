#include "numeric/internal/postings.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/internal/wide.h"

namespace morva {

Postings::Postings(std::span<SparsePoint const> points) : values_(points, column_count(points)) {}

Postings::Range Postings::of_column(std::uint32_t column) const {
  std::size_t const columns = values_.start.size() - 1;
  if (column >= columns) {
    return {values_.value.size(), values_.value.size()};
  }
  return {values_.start[column], values_.start[column + 1]};
}

void Postings::add_squares(Range range, std::span<double> out) const {
  for (std::size_t p = range.begin; p < range.end; ++p) {
    out[values_.point[p]] += values_.value[p] * values_.value[p];
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
      double const difference = a - values_.value[p];
      shared.push_back(out[values_.point[p]] + difference * difference);
    }
    wide::add_to_all(a * a, out);
    for (std::size_t p = range.begin; p < range.end; ++p) {
      out[values_.point[p]] = shared[p - range.begin];
    }
  }
  add_squares({next, values_.value.size()}, out);
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
    auto const* const begin = values_.point.data() + range.begin;
    auto const* const end = values_.point.data() + range.end;
    auto const* p = first == 0 ? begin : std::lower_bound(begin, end, from);
    double const* value = values_.value.data() + (p - values_.point.data());
    for (; p != end; ++p, ++value) {
      out[*p - from] += a * *value;
    }
  }
}

}  // namespace morva
