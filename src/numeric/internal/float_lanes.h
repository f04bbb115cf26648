#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"
#include "numeric/internal/wide.h"

namespace morva {

/// Points with few zeros in single precision, interleaved by groups, for bounds on the squares of
/// their distances: |x|^2 + |y|^2 - 2xy with room for all roundings, those of the exact measure and
/// its root included, at a quarter of the cost of the exact sums. Of two distances whose bounds are
/// apart, the greater is certain.
///
/// All is in units of a common scale, a power of two, so that no square overflows. The points are
/// tame; one of another dimension than the others is infinitely far from them.
class FloatLanes {
 public:
  /// Bounds for a few rows, that of row r and point j at [r * stride + j].
  struct Bounds {
    std::size_t stride = 0;
    std::vector<float> low;
    std::vector<float> high;

    std::span<float const> lows(std::size_t r, std::size_t first, std::size_t end) const {
      return std::span(low).subspan(r * stride + first, end - first);
    }
    std::span<float const> highs(std::size_t r, std::size_t first, std::size_t end) const {
      return std::span(high).subspan(r * stride + first, end - first);
    }
  };
  /// Bounds on the square of a distance that is known.
  struct Square {
    float low;
    float high;
  };

  /// The scale that brings the longest of the points to a length of at most 1.
  static double scale_for(std::span<SparsePoint const> points);

  FloatLanes(std::span<SparsePoint const> points, long long dimension, double scale);
  /// The points in the order of these indices.
  FloatLanes(std::span<SparsePoint const> points, std::span<std::size_t const> order,
             long long dimension, double scale);

  double scale() const { return scale_; }
  /// Whether others are tame and about as long as these at most, so that they can share the scale.
  bool can_scale(std::span<SparsePoint const> others) const;
  Square square_of(double distance) const;
  /// Bounds between points i, i + 1, ... of `rows`, `wide::rows_together` of them or as many as
  /// there are, and these points, those from `first` on. `i` is a multiple of that number, and both
  /// lists have one scale.
  void bound_squares(FloatLanes const& rows, std::size_t i, std::size_t first,
                     Bounds& bounds) const;
  /// The same up to point `end` - 1.
  void bound_squares(FloatLanes const& rows, std::size_t i, std::size_t first, std::size_t end,
                     Bounds& bounds) const;

 private:
  FloatLanes(std::size_t count, std::size_t columns, double scale);
  void put(std::size_t j, SparsePoint const& point);
  wide::FloatRows rows_from(std::size_t i) const;

  double scale_;
  std::size_t columns_;
  // [group][column]
  std::vector<wide::FloatColumn> groups_;
  // Of each point the square of its length, less and more its share of the room for roundings.
  std::vector<float> low_;
  std::vector<float> high_;
};

}  // namespace morva
