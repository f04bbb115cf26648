#include "suggest/parameter_sweep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "classes/distance_rows.h"
#include "classes/neighbour_distances.h"

namespace tool {

namespace {

constexpr double radius_unit = 0.05;
constexpr int most_radii = 14;

std::vector<int> ks_to_try(std::size_t point_count) {
  std::vector<int> ks;
  for (int k = 2; k <= 20; ++k) {
    ks.push_back(k);
  }
  ks.insert(ks.end(), {25, 30, 35, 40, 50, 60, 80, 100});
  std::erase_if(ks, [&](int k) { return static_cast<std::size_t>(k) > point_count / 2; });
  return ks;
}

void measure(DistanceMatrix const& distances, std::vector<std::vector<int>> classes, Trial& trial) {
  std::erase_if(classes, [](auto const& members) { return members.empty(); });
  std::vector<bool> is_in_class(distances.size());
  std::size_t largest = 0;
  for (std::vector<int> const& members : classes) {
    largest = std::max(largest, members.size());
    for (int const member : members) {
      is_in_class[static_cast<std::size_t>(member)] = true;
    }
  }
  auto const count = static_cast<double>(distances.size());
  auto const out = std::count(is_in_class.begin(), is_in_class.end(), false);
  trial.largest_class = static_cast<double>(largest) / count;
  trial.unclassified = static_cast<double>(out) / count;
  trial.silhouettes = silhouettes(distances, classes);
  trial.silhouette = mean_silhouette(trial.silhouettes);
  trial.classes = std::move(classes);
}

// The first with the greatest silhouette above 0.
std::optional<std::size_t> clearest(std::vector<Trial> const& trials) {
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < trials.size(); ++i) {
    if (trials[i].silhouette > (best ? trials[*best].silhouette : 0.0)) {
      best = i;
    }
  }
  return best;
}

// Of the mean of what each file gains by the better trial.
double standard_error(Trial const& other, Trial const& better) {
  auto const count = static_cast<double>(better.silhouettes.size());
  double const mean = better.silhouette - other.silhouette;
  double squares = 0.0;
  for (std::size_t i = 0; i < better.silhouettes.size(); ++i) {
    double const gain = better.silhouettes[i] - other.silhouettes[i];
    squares += (gain - mean) * (gain - mean);
  }
  return std::sqrt(squares / (count * (count - 1.0)));
}

double quantile(std::vector<double> const& ascending, double share) {
  auto const last = static_cast<double>(ascending.size() - 1);
  return ascending[static_cast<std::size_t>(share * last)];
}

}  // namespace

DistanceMatrix distances_of(HSparsePoints const& points) {
  DistanceRows const rows(points);
  DistanceMatrix distances(points.size());
  for (std::size_t i = 0; i < distances.size(); ++i) {
    rows.measure(i, distances[i]);
  }
  return distances;
}

DistanceMatrix directions_of(HSparsePoints const& points) {
  DistanceRows const rows(points);
  DistanceMatrix directions(points.size());
  for (std::size_t i = 0; i < directions.size(); ++i) {
    rows.measure_directions(i, directions[i]);
  }
  return directions;
}

std::size_t first_as_good(std::vector<Trial> const& trials, std::size_t greatest) {
  Trial const& better = trials[greatest];
  auto const found = std::find_if(trials.begin(), trials.end(), [&](Trial const& trial) {
    return trial.silhouette > 0.0 &&
           better.silhouette - trial.silhouette <= standard_error(trial, better);
  });
  return static_cast<std::size_t>(found - trials.begin());
}

Sweep sweep_k(HSparsePoints const& points, DistanceMatrix const& apart, SweepNote const& note) {
  gi_K_ClusterType = 0;
  std::vector<int> const ks = ks_to_try(points.size());
  Sweep sweep;
  for (int const k : ks) {
    note(sweep.trials.size(), ks.size());
    std::vector<std::vector<int>> classes;
    HSparseClusterMgr::kmeans(points, k, classes, false);
    if (!classes.empty()) {
      Trial& trial = sweep.trials.emplace_back();
      trial.k = k;
      measure(apart, std::move(classes), trial);
    }
  }
  if (auto const greatest = clearest(sweep.trials)) {
    sweep.best = first_as_good(sweep.trials, *greatest);
    if (sweep.best != greatest) {
      sweep.second = greatest;
    }
  }
  return sweep;
}

std::vector<double> radii_to_try(HSparsePoints const& points) {
  int const others = static_cast<int>(std::min<std::size_t>(points.size(), 5)) - 1;
  if (others < 1) {
    return {};
  }
  std::vector<double> const nearest = neighbour_distances(points, 1);
  std::vector<double> const fourth = neighbour_distances(points, others);
  // In units, as sums of radii would not be the numbers that they are printed as. A neighbour is
  // nearer than the radius.
  auto const units = [](double distance) {
    return static_cast<int>(std::floor(distance / radius_unit)) + 1;
  };
  int const first = units(nearest.front());
  int const last = std::max(units(quantile(fourth, 0.75)), first);
  int const step = std::max((last - first + most_radii - 2) / (most_radii - 1), 1);
  std::vector<double> radii;
  for (int unit = first; unit < last + step; unit += step) {
    radii.push_back(unit * 5 / 100.0);
  }
  return radii;
}

Sweep sweep_neighbourhoods(HSparsePoints const& points, DistanceMatrix const& apart,
                           std::vector<double> const& radii, SweepNote const& note) {
  constexpr std::array counts = {2, 4, 6};
  Sweep sweep;
  for (double const eps : radii) {
    for (int const minpts : counts) {
      note(sweep.trials.size(), radii.size() * counts.size());
      Trial& trial = sweep.trials.emplace_back();
      trial.neighbourhood = {eps, minpts};
      std::vector<std::vector<int>> classes;
      HSparseClusterMgr::dbscan(points, eps, minpts, false, classes);
      measure(apart, std::move(classes), trial);
    }
  }
  sweep.best = clearest(sweep.trials);
  return sweep;
}

}  // namespace tool
