#pragma once

#include "reference/measures.h"

namespace reference {

/// A canopy engine with its parameters; the search leaves in `t2` what it stopped on.
struct Canopy {
  Matrix points;
  long long k = 0;
  double t1 = 0.0;
  double t2 = 0.0;
  Clusters result;

  /// Distance of two points of the list; 0.0 for an index outside it.
  double between(int i, int j) const {
    return is_row(points, i) && is_row(points, j) ? distance(row(points, i), row(points, j)) : 0.0;
  }

  /// Checks the parameters and fills in radii from the mean distance.
  bool init() {
    if (k < 0 || t1 < 0.0 || t2 < 0.0) {
      return false;
    }
    if (t1 == 0.0 && t2 == 0.0) {
      t2 = mean_distance(points);
      t1 = 3.0 * t2;
    }
    return !(t1 < t2);
  }

  /// Moves what is near the seed from `remaining` to `canopy`.
  void take_near(int seed, Members& remaining, Members& canopy) const {
    for (int const index : remaining) {
      if (between(index, seed) <= t2) {
        canopy.push_back(index);
      }
    }
    for (int const index : canopy) {
      remove(index, remaining);
    }
  }

  /// One pass at the present `t2`.
  Clusters pass(Members const& indices) const {
    Clusters canopies;
    Members remaining = indices;
    while (!remaining.empty()) {
      int const seed = remaining.front();
      Members canopy{seed};
      remaining.erase(remaining.begin());
      take_near(seed, remaining, canopy);
      canopies.push_back(canopy);
    }
    return canopies;
  }

  void increase(double& low, double& high) {
    low = t2;
    t2 = high == 0.0 ? t2 * 2.0 : (high + t2) * 0.5;
  }

  void decrease(double& low, double& high) {
    high = t2;
    t2 = (low + t2) * 0.5;
  }

  /// The search for the `t2` that gives `k` clusters, from those in `result`.
  bool search(Members const& indices) {
    if (t1 == 0.0 || t2 == 0.0) {
      return false;
    }
    double low = 0.0;
    double high = 0.0;
    for (int step = 0; step < 2000; ++step) {
      auto const wanted = static_cast<std::size_t>(k);
      if (wanted == result.size()) {
        return true;
      }
      double const before = t2;
      if (wanted < result.size()) {
        increase(low, high);
      } else {
        decrease(low, high);
      }
      result = pass(indices);
      if (t2 < 1e-6 || t2 == before) {
        return true;
      }
    }
    return true;
  }

  /// A whole run over the list; false without points or with parameters that are refused.
  bool run() {
    if (points.empty() || !init()) {
      return false;
    }
    Members const indices = all_indices(count_of(points));
    result = pass(indices);
    if (k > 0 && static_cast<std::size_t>(k) != result.size()) {
      search(indices);
    }
    return true;
  }

  /// The mean point of each cluster.
  Matrix centers() const {
    Matrix means;
    for (Members const& members : result) {
      means.push_back(center(points, members));
    }
    return means;
  }
};

}  // namespace reference
