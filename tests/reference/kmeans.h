#pragma once

#include <map>

#include "reference/canopy.h"
#include "reference/measures.h"

namespace reference {

/// From the index of a mean to its points.
using ClusterMap = std::map<int, Members>;

/// A K-means engine with its parameters and what a run leaves.
struct KMeans {
  Matrix points;
  long long k = 0;
  bool use_canopy = false;
  /// 0: means, 1: medians, other: the means stay.
  int type = 1;
  Matrix means;
  Clusters result;
  /// How often the means were moved, or would have been.
  int updates = 0;
  /// The canopy run gave fewer means than were asked for; this many.
  bool is_short_of_canopies = false;
  long long asked = 0;
  static constexpr int max_iterations = 1000;

  /// The candidate with the greatest sum of distances to the seeds; -1 without a positive sum.
  int farthest_candidate(Members const& seeds, Members const& candidates) const {
    double best = 0.0;
    int index = -1;
    for (int const candidate : candidates) {
      double const sum = distance_sum(points, candidate, seeds);
      if (sum > best) {
        best = sum;
        index = candidate;
      }
    }
    return index;
  }

  /// Appends the farthest-first seeds to `seeds_out`.
  bool farthest_first(Matrix& seeds_out) const {
    Pair const pair = farthest_pair(points);
    if (!(pair.distance > 0.0)) {
      return false;
    }
    Members seeds{pair.i, pair.j};
    Members remaining = all_indices(count_of(points));
    remove(pair.i, remaining);
    remove(pair.j, remaining);
    while (static_cast<long long>(seeds.size()) < k) {
      int const next = farthest_candidate(seeds, remaining);
      if (next < 0) {
        return false;
      }
      seeds.push_back(next);
      remove(next, remaining);
    }
    for (int const seed : seeds) {
      seeds_out.push_back(row(points, seed));
    }
    return true;
  }

  void seed_with_canopies() {
    Canopy canopy;
    canopy.points = points;
    canopy.k = k > 0 ? k : 0;
    canopy.run();
    means = canopy.centers();
    if (k == 0) {
      k = static_cast<long long>(means.size());
    }
  }

  /// Checks `k` and makes the seeds.
  bool init() {
    if (k < 0) {
      return false;
    }
    if (k == 1) {
      means = {center(points)};
      return true;
    }
    if (k > count_of(points)) {
      k = count_of(points);
      means = points;
      return true;
    }
    if (use_canopy) {
      seed_with_canopies();
    } else if (k == 0 || !farthest_first(means)) {
      return false;
    }
    auto const count = static_cast<long long>(means.size());
    if (k > count) {
      is_short_of_canopies = true;
      asked = k;
      k = count;
      return true;
    }
    return k == count;
  }

  /// The last of the means nearest to a point.
  int nearest_mean(int point) const {
    double best = no_distance;
    int index = 0;
    for (int m = 0; m < k; ++m) {
      double const d = distance(row(means, m), row(points, point));
      if (d <= best) {
        best = d;
        index = m;
      }
    }
    return index;
  }

  ClusterMap assignment() const {
    ClusterMap clusters;
    for (int m = 0; m < count_of(means); ++m) {
      clusters[m] = {};
    }
    for (int i = 0; i < count_of(points); ++i) {
      clusters[nearest_mean(i)].push_back(i);
    }
    return clusters;
  }

  static bool has_empty(ClusterMap const& clusters) {
    return std::any_of(clusters.begin(), clusters.end(),
                       [](auto const& entry) { return entry.second.empty(); });
  }

  void move_means(ClusterMap const& clusters) {
    ++updates;
    if (type != 0 && type != 1) {
      return;
    }
    for (auto const& [key, members] : clusters) {
      means[static_cast<std::size_t>(key)] =
          type == 0 ? center(points, members) : median(points, members);
    }
  }

  /// Stores each member's distance from the members' center; the farthest member.
  int farthest_member(Members const& members, std::map<int, double>& distances) const {
    Point const middle = center(points, members);
    double best = 0.0;
    int index = 0;
    for (int const member : members) {
      if (!is_row(points, member)) {
        continue;
      }
      double const d = distance(middle, row(points, member));
      distances[member] = d;
      if (d > best) {
        best = d;
        index = member;
      }
    }
    return index;
  }

  /// Takes the entry with the greatest positive distance out of the map; -1 without one.
  static int take_farthest(std::map<int, double>& distances) {
    double best = 0.0;
    int point = -1;
    for (auto const& [index, d] : distances) {
      if (d > best) {
        best = d;
        point = index;
      }
    }
    if (point >= 0) {
      distances.erase(point);
    }
    return point;
  }

  /// Deals the farthest points out to the empty clusters.
  void repair(ClusterMap& clusters) const {
    int empty_count = 0;
    std::map<int, double> distances;
    for (auto const& [key, members] : clusters) {
      if (members.empty()) {
        ++empty_count;
      } else {
        farthest_member(members, distances);
      }
    }
    Members farthest;
    for (int i = 0; i < empty_count; ++i) {
      int const point = take_farthest(distances);
      if (point >= 0) {
        farthest.push_back(point);
      }
    }
    std::size_t next = 0;
    for (auto& [key, members] : clusters) {
      if (members.empty()) {
        if (next < farthest.size()) {
          members.push_back(farthest[next]);
        }
        ++next;
        continue;
      }
      for (int const point : farthest) {
        remove(point, members);
      }
    }
  }

  /// The iterations, from the present means; whether there are clusters.
  bool iterate() {
    ClusterMap previous;
    std::vector<ClusterMap> seen;
    for (int round = 0; round < max_iterations; ++round) {
      ClusterMap current = assignment();
      if (current == previous) {
        if (!has_empty(current)) {
          break;
        }
        repair(current);
        if (std::find(seen.begin(), seen.end(), current) != seen.end()) {
          break;
        }
        seen.push_back(current);
      }
      move_means(current);
      previous = current;
    }
    for (auto const& [key, members] : previous) {
      result.push_back(members);
    }
    return !result.empty();
  }

  /// A whole run.
  bool run() { return !points.empty() && init() && iterate(); }
};

}  // namespace reference
