#pragma once

#include <vector>

#include "host/export.h"
#include "numeric/HPointN.h"

/// Measures over a list of points: mean, smallest and largest pair distance, sums of distances,
/// the radius of a cluster. Members of a cluster are told by index into the list.
///
/// Pairs are visited with i from 0 up and, for each i, j from i + 1 up. Points of different size
/// measure as 9223372036854775808.0; a distance that is not a number is neither smallest nor
/// largest. A member below 0 or not below the number of points is skipped. Nothing is logged. The
/// pair measures look at the matrix once, take memory in proportion to the coordinates that are not
/// zero, and need far less time than a distance for each pair where most coordinates are zero.
class MORVA_EXPORT HClusterDistance {
 public:
  HClusterDistance();
  ~HClusterDistance();

  /// `HPointN::distance` of the two.
  static double get_distance(HPointN const& a, HPointN const& b);
  /// Mean distance over all pairs, summed in their order; 0.0 with fewer than two points.
  static double get_avg_distance(std::vector<HPointN> const& points);
  /// Smallest pair distance and its pair, of equal ones the first. `i` and `j` stay untouched where
  /// no pair lies below 9223372036854775808.0, which is then the result.
  static double get_min_distance_index(std::vector<HPointN> const& points, int& i, int& j);
  /// Largest pair distance and its pair, of equal ones the first. `i` and `j` stay untouched where
  /// no distance exceeds 0.0, which is then the result.
  static double get_max_distance_index(std::vector<HPointN> const& points, int& i, int& j);
  /// Sum of the distances from `point` to every point of the list, in order.
  static double get_distance_sum(HPointN const& point, std::vector<HPointN> const& points);
  /// Sum of the distances from `points[index]` to the members, in order; 0.0 where the index is
  /// outside the list.
  static double get_distance_sum(std::vector<HPointN> const& points, int const& index,
                                 std::vector<int> const& members);
  /// Largest distance from the members' mean point to a member; 0.0 without members.
  static double get_max_radius(std::vector<HPointN> const& points, std::vector<int> const& members);
  /// As the index forms, delivering copies of the two points; where no pair was found, or the list
  /// has one point, both are the first point. An empty list leaves both untouched.
  static double get_max_distance_point(std::vector<HPointN> const& points, HPointN& a, HPointN& b);
  /// The same for the smallest distance.
  static double get_min_distance_point(std::vector<HPointN> const& points, HPointN& a, HPointN& b);
};
