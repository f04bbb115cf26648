#include "numeric/internal/float_lanes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/internal/wide.h"

namespace morva {

namespace {

using wide::float_lanes;

constexpr float infinity = std::numeric_limits<float>::infinity();
// Far above what underflows on the way, far below what matters.
constexpr double least_room = 0x1p-100;
// No two points are farther from each other than 2, so that the square of any limit above says all.
constexpr double greatest_limit = 16.0;

}  // namespace

double FloatLanes::scale_for(std::span<SparsePoint const> points) {
  double greatest = 0.0;
  for (SparsePoint const& point : points) {
    greatest = std::max(greatest, point.square_sum);
  }
  return greatest == 0.0 ? 1.0 : std::ldexp(1.0, -std::ilogb(std::sqrt(greatest)) - 1);
}

FloatLanes::FloatLanes(std::size_t count, std::size_t columns, double scale)
    : scale_(scale), columns_(columns) {
  std::size_t const padded = (count + float_lanes - 1) / float_lanes * float_lanes;
  groups_.resize(padded / float_lanes * columns_);
  low_.assign(padded, infinity);
  high_.assign(padded, infinity);
}

FloatLanes::FloatLanes(std::span<SparsePoint const> points, long long dimension, double scale)
    : FloatLanes(points.size(), column_count(points), scale) {
  for (std::size_t j = 0; j < points.size(); ++j) {
    if (points[j].n == dimension) {
      put(j, points[j]);
    }
  }
}

FloatLanes::FloatLanes(std::span<SparsePoint const> points, std::span<std::size_t const> order,
                       long long dimension, double scale)
    : FloatLanes(order.size(), column_count(points), scale) {
  for (std::size_t j = 0; j < order.size(); ++j) {
    if (points[order[j]].n == dimension) {
      put(j, points[order[j]]);
    }
  }
}

void FloatLanes::put(std::size_t j, SparsePoint const& point) {
  wide::FloatColumn* const group = groups_.data() + j / float_lanes * columns_;
  for (std::size_t i = 0; i < point.columns.size(); ++i) {
    group[point.columns[i]].values[j % float_lanes] = static_cast<float>(point.values[i] * scale_);
  }
  // A sum of m products is off by less than m roundings of the sum of their sizes, which half of
  // |x|^2 + |y|^2 bounds; twice as much and a few more leave room for all else.
  double const room = static_cast<double>(columns_ + 16) * std::numeric_limits<float>::epsilon();
  double const square = point.square_sum * scale_ * scale_;
  low_[j] = static_cast<float>(square - square * room - least_room);
  high_[j] = static_cast<float>(square + square * room + least_room);
}

bool FloatLanes::can_scale(std::span<SparsePoint const> others) const {
  return std::all_of(others.begin(), others.end(), [this](SparsePoint const& point) {
    return point.is_tame && point.square_sum * scale_ * scale_ <= 2.0;
  });
}

FloatLanes::Square FloatLanes::square_of(double distance) const {
  constexpr double room = 8.0 * std::numeric_limits<float>::epsilon();
  double const scaled = std::min(distance * scale_, greatest_limit);
  double const square = scaled * scaled;
  return {static_cast<float>(square - square * room - least_room),
          static_cast<float>(square + square * room + least_room)};
}

void FloatLanes::bound_squares(FloatLanes const& rows, std::size_t i, std::size_t first,
                               Bounds& bounds) const {
  bound_squares(rows, i, first, low_.size(), bounds);
}

void FloatLanes::bound_squares(FloatLanes const& rows, std::size_t i, std::size_t first,
                               std::size_t end, Bounds& bounds) const {
  bounds.stride = low_.size();
  bounds.low.resize(wide::rows_together * bounds.stride);
  bounds.high.resize(wide::rows_together * bounds.stride);
  wide::FloatRows const together = rows.rows_from(i);
  for (std::size_t j = first / float_lanes * float_lanes; j < end; j += float_lanes) {
    wide::square_bounds(together, rows_from(j), std::min(columns_, rows.columns_), bounds.stride,
                        bounds.low.data() + j, bounds.high.data() + j);
  }
}

wide::FloatRows FloatLanes::rows_from(std::size_t i) const {
  return {groups_.data() + i / float_lanes * columns_, i % float_lanes, low_.data() + i,
          high_.data() + i};
}

}  // namespace morva
