#pragma once

#include <vector>

#include "host/export.h"
#include "numeric/HPointN.h"

/// Centers of point lists: the empty point of a dimension, the mean of all or of some points, the
/// coordinate-wise median of some. Every point made here has an empty label. Nothing is logged.
class MORVA_EXPORT HClusterCenter {
 public:
  HClusterCenter();
  ~HClusterCenter();

  /// `n` coordinates of 0.0; none where `n` is below 1.
  static HPointN get_empty_point(long long const& n);
  /// Mean of the listed members, in the dimension of `points[0]`. A member outside the list is
  /// skipped; one of another dimension adds nothing but counts, and so dilutes the mean. Without
  /// any valid member the zero point; with an empty list of points or members a point without
  /// coordinates.
  static HPointN get_center_point(std::vector<HPointN> const& points,
                                  std::vector<int> const& members);
  /// Mean of all points, the same rule for dimensions.
  static HPointN get_center_point(std::vector<HPointN> const& points);
  /// Coordinate by coordinate, in the dimension of `points[0]`: the middle value of an odd number
  /// of members; of an even number 2m the mean of the values at positions m and m + 1, counted from
  /// 0 - the upper middle value and its upper neighbour, 3.5 for (1, 2, 3, 4). Of exactly two
  /// members it is the upper value. Values are ordered with -0.0 before 0.0 and NaN last; a
  /// coordinate that a member lacks counts as 0.0, and a member outside the list is skipped. With
  /// no points or no valid member, a point without coordinates.
  static HPointN get_median_point(std::vector<HPointN> const& points,
                                  std::vector<int> const& members);
};
