#include "numeric/internal/point_block.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace morva {

namespace {

using Row = PointBlock::Row;
constexpr std::size_t width = PointBlock::width;
constexpr std::uint32_t no_column = std::numeric_limits<std::uint32_t>::max();

// A row in a register. Handed on by reference, since how a function takes it by value depends on
// the processor.
using Lanes4 [[gnu::vector_size(sizeof(Row))]] = double;

// `to` becomes `from` + `term`.
void add(Lanes4 const& term, Row const& from, Row& to) {
  Lanes4 sum;
  std::memcpy(&sum, &from, sizeof sum);
  sum += term;
  std::memcpy(&to, &sum, sizeof sum);
}

struct View {
  std::uint32_t const* start;
  std::uint16_t const* point;
  double const* value;
};

// The columns of some points in one ascending order.
class ColumnMerge {
 public:
  explicit ColumnMerge(PointBlock::Others const& points) : points_(points) {
    for (std::size_t r = 0; r < width; ++r) {
      read(r);
    }
  }

  std::uint32_t column() const {
    return std::min(std::min(columns_[0], columns_[1]), std::min(columns_[2], columns_[3]));
  }
  // The values in that column, 0.0 for the points that have none; goes on to the next.
  void take(std::uint32_t column, Lanes4& values) {
    for (std::size_t r = 0; r < width; ++r) {
      bool const is_here = columns_[r] == column;
      values[r] = is_here ? points_[r]->values[next_[r]] : 0.0;
      next_[r] += static_cast<std::size_t>(is_here);
      if (is_here) {
        read(r);
      }
    }
  }

 private:
  void read(std::size_t r) {
    std::vector<std::uint32_t> const& columns = points_[r]->columns;
    columns_[r] = next_[r] < columns.size() ? columns[next_[r]] : no_column;
  }

  PointBlock::Others const& points_;
  std::array<std::size_t, width> next_{};
  std::array<std::uint32_t, width> columns_{};
};

// Adds the squares of the block's values in a range, none of which the others share.
void add_squares(View const& block, std::size_t begin, std::size_t end, Row* sums) {
  for (std::size_t p = begin; p < end; ++p) {
    double const square = block.value[p] * block.value[p];
    Row& sum = sums[block.point[p]];
    add(Lanes4{square, square, square, square}, sum, sum);
  }
}

// Adds what one column contributes: to each sum the square of the others' value, and to those of
// the range, which have a value there, the square of the difference instead.
void add_column(View const& block, Lanes4 const& value, std::size_t begin, std::size_t end,
                std::span<Row> sums, Row* shared) {
  for (std::size_t p = begin; p < end; ++p) {
    Lanes4 const difference = value - block.value[p];
    add(difference * difference, sums.data()[block.point[p]], shared[p - begin]);
  }
  Lanes4 const square = value * value;
#pragma GCC unroll 8
  for (Row& sum : sums) {
    add(square, sum, sum);
  }
  for (std::size_t p = begin; p < end; ++p) {
    sums.data()[block.point[p]] = shared[p - begin];
  }
}

}  // namespace

PointBlock::PointBlock(std::span<SparsePoint const> points, std::size_t columns)
    : values_(points, columns), sums_(points.size()), shared_(points.size()) {}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default"), gnu::flatten]]
#endif
std::span<Row const>
PointBlock::distances(Others const& others, std::size_t count) {
  std::fill(sums_.begin(), sums_.end(), Row{});
  View const block{values_.start.data(), values_.point.data(), values_.value.data()};
  std::span<Row> const sums(sums_.data(), count);
  ColumnMerge merge(others);
  std::size_t next = 0;
  for (std::uint32_t column = merge.column(); column != no_column; column = merge.column()) {
    std::size_t const begin = block.start[column];
    std::size_t const end = block.start[column + 1];
    add_squares(block, next, begin, sums.data());
    Lanes4 value;
    merge.take(column, value);
    add_column(block, value, begin, end, sums, shared_.data());
    next = end;
  }
  add_squares(block, next, values_.value.size(), sums.data());
  for (Row& sum : sums) {
    for (double& lane : sum.lanes) {
      lane = std::sqrt(lane);
    }
  }
  return sums;
}

}  // namespace morva
