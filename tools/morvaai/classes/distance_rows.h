#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "morvaai.h"

namespace tool {

/// The distances between the points of a list, one row at a time, for figures that are shown and
/// parameters that are proposed. They are those of `HPointN::get_distance` to ten digits, and 0
/// where that is 0; the same from either point. Takes 32 bytes for each coordinate that is not
/// zero.
class DistanceRows {
 public:
  explicit DistanceRows(HSparsePoints const& points);

  std::size_t size() const { return points_.size(); }
  /// Replaces `row` by the distance of point `i` from each point, itself included. Time in
  /// proportion to the coordinates that it shares with others, and to the number of points.
  void measure(std::size_t i, std::vector<double>& row) const;
  /// The same with 1 less the cosine of the angle between the points in place of their distance:
  /// how little they have in common, however long they are. 0 of points in one direction, 1 of a
  /// point without length.
  void measure_directions(std::size_t i, std::vector<double>& row) const;

 private:
  struct Coordinate {
    std::uint32_t index;
    double value;
  };
  // Of one point, in order of their indices.
  using Coordinates = std::vector<Coordinate>;

  void multiply(std::size_t i, std::vector<double>& products) const;
  static double squared_distance(Coordinates const& a, Coordinates const& b);

  std::vector<Coordinates> points_;
  std::vector<double> squared_lengths_;
  // For each dimension the points that are not zero there, with their value.
  std::vector<std::vector<Coordinate>> columns_;
};

}  // namespace tool
