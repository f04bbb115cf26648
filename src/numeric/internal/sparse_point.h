#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "numeric/HPointN.h"

namespace morva {

/// A point as the list of its coordinates that are not +0.0, by ascending index, with what the
/// bounds on its distances need. Of a document's term weights, one in hundreds is left.
///
/// Leaving zeros out changes no bit of a measure: a sum of squares that begins at 0.0 does not
/// change by adding the square of 0.0. (-0.0 stays, so that a point comes back as it was.)
struct SparsePoint {
  long long n = 0;
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  /// Sum of the squares in index order.
  double square_sum = 0.0;
  /// All values are finite and neither so large nor so small that a square loses precision, and
  /// distances stay far below `no_distance`.
  bool is_tame = true;

  SparsePoint() = default;
  SparsePoint(long long dimension, std::vector<std::uint32_t> indices, std::vector<double> data);
};

/// Which number of dimensions a point is taken to have: the stated `n`, or that of its coordinates,
/// which a copy of the point would have.
enum class Dimension { stated, stored };

/// A point of fewer than 2^32 coordinates; ones beyond the dimension are left out.
SparsePoint compress(HPointN const& point, Dimension dimension = Dimension::stated);
std::vector<SparsePoint> compress(std::vector<HPointN> const& points,
                                  Dimension dimension = Dimension::stated);
/// Number of columns up to the last that one of the points has a value in.
std::size_t column_count(std::span<SparsePoint const> points);
/// The point without a label.
HPointN expand(SparsePoint const& point);

/// `HPointN::distance` and `HPointN::cos_similarity`, bit for bit. Linear in the coordinates that
/// are not zero.
double distance(SparsePoint const& a, SparsePoint const& b);
double cos_similarity(SparsePoint const& a, SparsePoint const& b);

/// What the square of a distance that is known can be off from the sum of squares that it is the
/// root of, as a share of it: by a root, and by the roundings of bounds that are made of it. Scales
/// are powers of two, which round nothing.
inline constexpr double root_slack = 4.0 * std::numeric_limits<double>::epsilon();

/// Bounds on the square of the distance of two tame points of one dimension, as it is summed, from
/// the sum of their products: |a|^2 + |b|^2 - 2ab with room for all roundings, those of the root
/// included. Of two distances whose bounds are apart, the greater is certain.
struct SquareBounds {
  double low;
  double high;

  /// What a point brings to its bounds.
  struct Part {
    double square_sum;
    double roundings;

    Part(SparsePoint const& point)  // NOLINT(google-explicit-constructor): a point will do
        : square_sum(point.square_sum),
          roundings(static_cast<double>(4 * point.values.size() + 32)) {}
  };

  SquareBounds(Part const& a, Part const& b, double dot) {
    // A sum of m rounded squares and one of m rounded products are each off by less than m + 3
    // roundings of what they would be without cancellation, which |a|^2 + |b|^2 bounds.
    double const roundings = a.roundings + b.roundings;
    double const squares = a.square_sum + b.square_sum;
    double const slack = roundings * std::numeric_limits<double>::epsilon() * squares;
    double const square = squares - 2.0 * dot;
    low = square - slack;
    high = square + slack;
  }
};

}  // namespace morva
