#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/rows.h"

namespace morva {

/// Finds the nearest mean of each point again and again, while fewer and fewer of the means move.
///
/// Of each point with sparse bounds it keeps bounds on the squares of its distances from its
/// nearest mean and from all others together. A mean that moves comes nearer or goes farther by no
/// more than its way: as long as the bounds stay apart by that, no mean is looked at; as long as
/// they do with the means that have moved measured anew, those that have not are not looked at.
///
/// After Hamerly, "Making k-means even faster" (SDM 2010).
class NearestMeans {
 public:
  /// Refers to the points.
  explicit NearestMeans(DistanceTable const& points) : points_(points) {}

  /// As `find_nearest`. What it keeps is of use for the same rows and as many means.
  void find(DistanceTable const& means, Rows rows, std::span<std::size_t> out);

 private:
  class Candidates;
  class Shifts;
  struct Known {
    std::size_t nearest = 0;
    double low = 0.0;
    double high = 0.0;
    /// What the squares of the distances from all other means are not below.
    double others = std::numeric_limits<double>::infinity();
  };

  bool can_bound(DistanceTable const& means) const;
  static Known search(SparsePoint const& x, DistanceTable const& means, Candidates const& all);
  static bool follow(Candidates const& moved, Known& known);

  DistanceTable const& points_;
  Rows rows_;
  std::vector<SparsePoint> means_;
  // Of each row what is known; empty where nothing is.
  std::vector<Known> known_;
};

}  // namespace morva
