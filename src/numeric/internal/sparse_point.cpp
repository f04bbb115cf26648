#include "numeric/internal/sparse_point.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

#include "numeric/internal/no_distance.h"

namespace morva {

namespace {

// Squares and products of values in this range are exact to a rounding, and the square of a
// distance between two points of at most the greatest square sum stays below that of `no_distance`.
constexpr double least_tame_value = 1e-150;
constexpr double greatest_tame_square_sum = 1e36;

using Bits [[gnu::vector_size(64)]] = std::uint64_t;
constexpr std::size_t line_size = sizeof(Bits) / sizeof(double);
// Most of a document's coordinates are passed over by so many cache lines at a time.
constexpr std::size_t block_lines = 4;
constexpr std::size_t block_size = block_lines * line_size;
// How far ahead memory is asked for: the next page, which the processor does not ask for by itself.
constexpr std::size_t ahead = 4096 / sizeof(double);

bool is_kept(double x) {
  return std::bit_cast<std::uint64_t>(x) != 0;
}

// Whether one of the values of a cache line is kept.
bool has_kept(double const* line) {
  Bits bits;
  std::memcpy(&bits, line, sizeof bits);
  std::uint64_t any = 0;
  for (std::size_t i = 0; i < line_size; ++i) {
    any |= bits[i];
  }
  return any != 0;
}

// Number of values in the whole blocks at the beginning of which none is kept.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
std::size_t
count_passed_over(double const* data, std::size_t size) {
  std::size_t i = 0;
  for (; size - i >= block_size; i += block_size) {
    for (std::size_t line = 0; line < block_lines; ++line) {
      __builtin_prefetch(data + std::min(i + line * line_size + ahead, size));
    }
    std::array<Bits, block_lines> block;
    std::memcpy(block.data(), data + i, sizeof block);
    Bits any = block[0];
    for (std::size_t line = 1; line < block_lines; ++line) {
      any |= block[line];
    }
    std::uint64_t folded = 0;
    for (std::size_t k = 0; k < line_size; ++k) {
      folded |= any[k];
    }
    if (folded != 0) {
      break;
    }
  }
  return i;
}

// Reads the coordinates once, at the speed of memory. Its lists are kept from point to point; each
// point gets copies of their own size.
class Compressor {
 public:
  SparsePoint operator()(HPointN const& point, Dimension dimension) {
    auto const stored = static_cast<long long>(point.vt_data.size());
    long long const n = dimension == Dimension::stated ? point.n : stored;
    std::span<double const> const data(point.vt_data.data(),
                                       static_cast<std::size_t>(std::clamp(n, 0LL, stored)));
    columns_.clear();
    values_.clear();
    std::size_t next = 0;
    while (data.size() - next >= block_size) {
      next += count_passed_over(data.data() + next, data.size() - next);
      for (std::size_t line = 0; line < block_lines && data.size() - next >= line_size; ++line) {
        if (has_kept(data.data() + next)) {
          keep(data, next, line_size);
        }
        next += line_size;
      }
    }
    keep(data, next, data.size() - next);
    return {n, {columns_.begin(), columns_.end()}, {values_.begin(), values_.end()}};
  }

 private:
  void keep(std::span<double const> data, std::size_t first, std::size_t count) {
    for (std::size_t i = first; i < first + count; ++i) {
      if (is_kept(data[i])) {
        columns_.push_back(static_cast<std::uint32_t>(i));
        values_.push_back(data[i]);
      }
    }
  }

  std::vector<std::uint32_t> columns_;
  std::vector<double> values_;
};

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
  return Compressor()(point, dimension);
}

std::vector<SparsePoint> compress(std::vector<HPointN> const& points, Dimension dimension) {
  Compressor compressor;
  std::vector<SparsePoint> result;
  result.reserve(points.size());
  for (HPointN const& point : points) {
    result.push_back(compressor(point, dimension));
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
