#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "morvaai.h"

#include "classes/method.h"
#include "suggest/silhouette.h"

namespace tool {

/// The distances between all of the points, and what they differ by in direction, as `DistanceRows`
/// has them: 8 bytes for each pair, twice.
DistanceMatrix distances_of(HSparsePoints const& points);
DistanceMatrix directions_of(HSparsePoints const& points);

/// What a clustering with some parameters came to.
struct Trial {
  /// Of K-means.
  int k = 0;
  /// Of DBSCAN.
  Neighbourhood neighbourhood;
  std::vector<std::vector<int>> classes;
  /// Shares of all files.
  double largest_class = 0.0;
  double unclassified = 0.0;
  /// Of each file, and their mean.
  std::vector<double> silhouettes;
  double silhouette = 0.0;
};

/// Trials, and which of them to prefer. None where no silhouette is above 0.
struct Sweep {
  std::vector<Trial> trials;
  std::optional<std::size_t> best;
  /// The one with the greatest silhouette, where another is the best.
  std::optional<std::size_t> second;
};

/// Hears of the number of trials that are done, and of all.
using SweepNote = std::function<void(std::size_t, std::size_t)>;

/// The first of the trials that is as good as the one at `greatest`, by the rule of one standard
/// error (Breiman, Friedman, Olshen and Stone, "Classification and Regression Trees", 1984): its
/// silhouette is above 0, and less by no more than the standard error of that difference, which the
/// silhouettes of the single files tell.
std::size_t first_as_good(std::vector<Trial> const& trials, std::size_t greatest);

/// K-means over numbers of classes: each from 2 to 20, and coarser to 100, up to half of the
/// points, with silhouettes by `apart`. Best is the smallest number that is as good as the one with
/// the greatest silhouette; second is that one. Sets `gi_K_ClusterType`.
Sweep sweep_k(HSparsePoints const& points, DistanceMatrix const& apart, SweepNote const& note);

/// Radii to try: multiples of 0.05, from where the nearest two points are neighbours to where the
/// fourth neighbour of most is. At most 14; none for less than two points.
std::vector<double> radii_to_try(HSparsePoints const& points);

/// DBSCAN over these radii, with 2, 4 and 6 points in a neighbourhood, and silhouettes by `apart`.
/// Best is the first with the greatest.
Sweep sweep_neighbourhoods(HSparsePoints const& points, DistanceMatrix const& apart,
                           std::vector<double> const& radii, SweepNote const& note);

}  // namespace tool
