#include "numeric/internal/sparse_point.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "numeric/internal/no_distance.h"

namespace morva {

namespace {

// Squares and products of values in this range are exact to a rounding, and the square of a
// distance between two points of at most the greatest square sum stays below that of `no_distance`.
constexpr double least_tame_value = 1e-150;
constexpr double greatest_tame_square_sum = 1e36;

// Most of a document's coordinates are passed over by so many at a time.
constexpr std::size_t block_size = 16;

bool is_kept(double x) {
  return std::bit_cast<std::uint64_t>(x) != 0;
}

std::size_t count_kept(std::span<double const> data) {
  std::size_t kept = 0;
  for (double const x : data) {
    kept += static_cast<std::size_t>(is_kept(x));
  }
  return kept;
}

// Calls `visit(x, y)` for each index at which a or b has a value, in index order.
template <typename Visit>
void walk_union(SparsePoint const& a, SparsePoint const& b, Visit const& visit) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.columns.size() && j < b.columns.size()) {
    if (a.columns[i] == b.columns[j]) {
      visit(a.values[i++], b.values[j++]);
    } else if (a.columns[i] < b.columns[j]) {
      visit(a.values[i++], 0.0);
    } else {
      visit(0.0, b.values[j++]);
    }
  }
  for (; i < a.columns.size(); ++i) {
    visit(a.values[i], 0.0);
  }
  for (; j < b.columns.size(); ++j) {
    visit(0.0, b.values[j]);
  }
}

}  // namespace

SparsePoint::SparsePoint(long long dimension, std::vector<std::uint32_t> indices,
                         std::vector<double> data)
    : n(dimension), columns(std::move(indices)), values(std::move(data)) {
  for (double const x : values) {
    square_sum += x * x;
    is_tame = is_tame && (x == 0.0 || std::abs(x) >= least_tame_value);
  }
  is_tame = is_tame && square_sum <= greatest_tame_square_sum;
}

SparsePoint compress(HPointN const& point, Dimension dimension) {
  auto const stored = static_cast<long long>(point.vt_data.size());
  long long const n = dimension == Dimension::stated ? point.n : stored;
  std::span<double const> const data(point.vt_data.data(),
                                     static_cast<std::size_t>(std::clamp(n, 0LL, stored)));
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  // Counted first, while the data is on its way into the cache: growing would cost twice the
  // memory.
  std::size_t const kept = count_kept(data);
  columns.reserve(kept);
  values.reserve(kept);
  for (std::size_t block = 0; values.size() < kept; block += block_size) {
    std::size_t const end = std::min(data.size(), block + block_size);
    if (count_kept(data.subspan(block, end - block)) == 0) {
      continue;
    }
    for (std::size_t i = block; i < end; ++i) {
      if (is_kept(data[i])) {
        columns.push_back(static_cast<std::uint32_t>(i));
        values.push_back(data[i]);
      }
    }
  }
  return {n, std::move(columns), std::move(values)};
}

std::vector<SparsePoint> compress(std::vector<HPointN> const& points, Dimension dimension) {
  std::vector<SparsePoint> result;
  result.reserve(points.size());
  for (HPointN const& point : points) {
    result.push_back(compress(point, dimension));
  }
  return result;
}

std::size_t column_count(std::span<SparsePoint const> points) {
  std::size_t count = 0;
  for (SparsePoint const& point : points) {
    if (!point.columns.empty()) {
      count = std::max(count, std::size_t{point.columns.back()} + 1);
    }
  }
  return count;
}

HPointN expand(SparsePoint const& point) {
  HPointN result;
  result.resize(point.n);
  for (std::size_t i = 0; i < point.columns.size(); ++i) {
    result.vt_data[point.columns[i]] = point.values[i];
  }
  return result;
}

double distance(SparsePoint const& a, SparsePoint const& b) {
  if (a.n != b.n) {
    return no_distance;
  }
  if (b.columns.empty()) {
    return std::sqrt(a.square_sum);
  }
  double sum = 0.0;
  walk_union(a, b, [&sum](double x, double y) { sum += (x - y) * (x - y); });
  return std::sqrt(sum);
}

double cos_similarity(SparsePoint const& a, SparsePoint const& b) {
  if (a.n != b.n || a.n <= 1) {
    return 0.0;
  }
  double dot = 0.0;
  walk_union(a, b, [&dot](double x, double y) { dot += x * y; });
  return dot / (std::sqrt(a.square_sum) * std::sqrt(b.square_sum));
}

}  // namespace morva
