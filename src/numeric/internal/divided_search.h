#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/nearest_means.h"

/// What the engines look for in a table, divided among the processes of its group: each of them
/// gets what one process alone would find, bit for bit. All of them make the same calls.
namespace morva::divided {

/// `morva::farthest_pair` of all pairs.
std::optional<FoundPair> farthest_pair(DistanceTable const& table);
/// `morva::average_distance`.
double average_distance(DistanceTable const& table);
/// `morva::for_each_neighbourhood` of every point.
void for_each_neighbourhood(DistanceTable const& table, double limit, DistanceTable::Border border,
                            VisitNeighbours const& visit);
/// `NearestMeans::find` for the first `count` points.
std::vector<std::size_t> find_nearest(DistanceTable const& means, DistanceTable const& points,
                                      std::size_t count, NearestMeans& search);

/// Of the members of a cluster the point that stands for them.
using MakePoint = std::function<SparsePoint(std::vector<int> const& members)>;
/// A point for each of the clusters, whose members are points of the table. Whole clusters are
/// dealt to the processes, where making points is more than telling them to the others.
std::vector<SparsePoint> make_points(DistanceTable const& table,
                                     std::vector<std::vector<int> const*> const& clusters,
                                     MakePoint const& make);

/// The points of a table by the sums of their distances to seeds. For tables with a group.
class DistanceSums {
 public:
  explicit DistanceSums(DistanceTable const& table);

  /// Adds the distances to one more seed, which is a candidate no more.
  void add(std::size_t seed);
  /// Of the candidates the first with the greatest sum above 0.0.
  std::optional<std::size_t> farthest() const;

 private:
  DistanceTable const& table_;
  DistanceTable const& own_;
  // Of the points that are dealt to this process.
  std::vector<double> sums_;
  std::vector<char> is_candidate_;
  std::vector<double> row_;
};

}  // namespace morva::divided
