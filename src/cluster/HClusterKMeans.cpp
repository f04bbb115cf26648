#include "cluster/HClusterKMeans.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include "cluster/HClusterCanopy.h"
#include "cluster/internal/empty_cluster_repair.h"
#include "cluster/internal/members.h"
#include "host/internal/log_line.h"
#include "numeric/internal/center_finder.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/divided_search.h"
#include "numeric/internal/nearest_means.h"
#include "numeric/internal/no_distance.h"
#include "numeric/internal/ranked_columns.h"

namespace {

using morva::DistanceTable;
using morva::SparsePoint;

constexpr wchar_t const* tag = L"../HClusterKMeans";
constexpr int most_rounds = 1000;

enum UpdateRule : int { arithmetic_means = 0, medians = 1 };

// The mean of a cluster by the rule; without coordinates for an empty one.
SparsePoint moved_mean(morva::CenterFinder& finder, DistanceTable const& points,
                       std::vector<int> const& members, int rule) {
  if (points.size() == 0 || members.empty()) {
    return {};
  }
  std::vector<SparsePoint const*> const valid = morva::valid_members(points.points(), members);
  if (rule == arithmetic_means) {
    return finder.mean(points[0].n, valid, static_cast<double>(valid.size()));
  }
  return valid.empty() ? SparsePoint() : finder.median(points[0].n, valid);
}

// The same of each of the clusters.
std::vector<SparsePoint> moved_means(morva::CenterFinder& finder, DistanceTable const& points,
                                     std::vector<std::vector<int> const*> const& clusters,
                                     int rule) {
  return morva::divided::make_points(points, clusters, [&](std::vector<int> const& members) {
    return moved_mean(finder, points, members, rule);
  });
}

// Assigns the first `count` points to the nearest of the first `mean_count` means; each mean has
// its key.
HClusterKMeans::ClusterMap assign(DistanceTable const& points, std::size_t count,
                                  std::vector<SparsePoint>& means, std::size_t mean_count,
                                  morva::NearestMeans& search) {
  HClusterKMeans::ClusterMap clusters;
  for (std::size_t mean = 0; mean < means.size(); ++mean) {
    clusters[static_cast<int>(mean)];
  }
  auto const used = means.begin() + static_cast<std::ptrdiff_t>(std::min(mean_count, means.size()));
  std::vector<SparsePoint> unused(std::make_move_iterator(used),
                                  std::make_move_iterator(means.end()));
  means.erase(used, means.end());
  DistanceTable table(std::move(means), points.form());
  std::vector<std::size_t> const nearest =
      morva::divided::find_nearest(table, points, count, search);
  for (std::size_t i = 0; i < count; ++i) {
    clusters[static_cast<int>(nearest[i])].push_back(static_cast<int>(i));
  }
  means = table.take_points();
  std::move(unused.begin(), unused.end(), std::back_inserter(means));
  return clusters;
}

// The means of a run, and what an iteration does with them.
class MeanMover {
 public:
  MeanMover(DistanceTable const& points, std::size_t count, std::vector<SparsePoint> means,
            std::size_t mean_count)
      : points_(points),
        count_(count),
        means_(std::move(means)),
        mean_count_(mean_count),
        search_(points) {}

  HClusterKMeans::ClusterMap assign() {
    return ::assign(points_, count_, means_, mean_count_, search_);
  }

  // Moves the means as `gi_K_ClusterType` says; the same members have the same mean.
  void move(HClusterKMeans::ClusterMap const& clusters,
            HClusterKMeans::ClusterMap const& previous) {
    int const rule = gi_K_ClusterType;
    if (rule != arithmetic_means && rule != medians) {
      morva::log_line(1, tag, __LINE__, L"gi_K_ClusterType:", HString(rule, false));
      return;
    }
    HClusterKMeans::ClusterMap changed;
    for (auto const& [key, members] : clusters) {
      auto const before = previous.find(key);
      if (static_cast<std::size_t>(key) < means_.size() &&
          (rule != last_rule_ || before == previous.end() || members != before->second)) {
        changed.emplace(key, members);
      }
    }
    move_means(changed, rule);
    last_rule_ = rule;
  }

  bool has_moved() const { return last_rule_ != none; }
  std::vector<SparsePoint> take_means() { return std::move(means_); }

 private:
  static constexpr int none = -1;

  void move_means(HClusterKMeans::ClusterMap const& changed, int rule) {
    if (rule == medians && points_.floats() != nullptr) {
      move_to_medians(changed);
      return;
    }
    std::vector<std::vector<int> const*> clusters;
    for (auto const& [key, members] : changed) {
      clusters.push_back(&members);
    }
    std::vector<SparsePoint> moved = moved_means(finder_, points_, clusters, rule);
    auto next = moved.begin();
    for (auto const& [key, members] : changed) {
      means_[static_cast<std::size_t>(key)] = std::move(*next++);
    }
  }

  // All at once, where the points are finite and of few zeros.
  void move_to_medians(HClusterKMeans::ClusterMap const& changed) {
    if (!ranked_) {
      ranked_.emplace(points_.points());
    }
    std::vector<std::span<int const>> sets;
    for (auto const& [key, members] : changed) {
      if (!members.empty()) {
        sets.emplace_back(members);
      }
    }
    std::vector<SparsePoint> medians = ranked_->medians(sets);
    auto next = medians.begin();
    for (auto const& [key, members] : changed) {
      means_[static_cast<std::size_t>(key)] = members.empty() ? SparsePoint() : std::move(*next++);
    }
  }

  DistanceTable const& points_;
  std::size_t count_;
  std::vector<SparsePoint> means_;
  std::size_t mean_count_;
  morva::NearestMeans search_;
  morva::CenterFinder finder_;
  std::optional<morva::RankedColumns> ranked_;
  int last_rule_ = none;
};

// Points by the sums of their distances to seeds, as `morva::divided::DistanceSums`, in one
// process.
class SeedSums {
 public:
  SeedSums(DistanceTable const& points, std::vector<int> candidates)
      : points_(points),
        candidates_(std::move(candidates)),
        sums_(points.size()),
        row_(points.size()) {}

  void add(std::size_t seed) {
    morva::remove_each({static_cast<int>(seed)}, candidates_);
    points_.distances(points_[seed], 0, row_);
    std::transform(sums_.begin(), sums_.end(), row_.begin(), sums_.begin(), std::plus<>());
  }

  std::optional<std::size_t> farthest() const {
    std::optional<std::size_t> result;
    double greatest = 0.0;
    for (int const candidate : candidates_) {
      auto const index = static_cast<std::size_t>(candidate);
      if (morva::is_point(points_.points(), candidate) && sums_[index] > greatest) {
        greatest = sums_[index];
        result = index;
      }
    }
    return result;
  }

 private:
  DistanceTable const& points_;
  std::vector<int> candidates_;
  std::vector<double> sums_;
  std::vector<double> row_;
};

// The farthest pair, then always the first of the candidates with the greatest sum of distances to
// the seeds so far; empty where there are not so many.
template <typename Sums>
std::vector<int> farthest_first(DistanceTable const& points, Sums sums, long long k) {
  auto const pair = morva::divided::farthest_pair(points);
  if (!pair) {
    return {};
  }
  std::vector<int> seeds;
  auto const add = [&](std::size_t seed) {
    seeds.push_back(static_cast<int>(seed));
    sums.add(seed);
  };
  add(pair->i);
  add(pair->j);
  while (static_cast<long long>(seeds.size()) < k) {
    auto const farthest = sums.farthest();
    if (!farthest) {
      return {};
    }
    add(*farthest);
  }
  return seeds;
}

// A table with a group is that of a run over all its points.
std::vector<int> farthest_first(DistanceTable const& points, std::vector<int> const& candidates,
                                long long k) {
  return points.group() ? farthest_first(points, morva::divided::DistanceSums(points), k)
                        : farthest_first(points, SeedSums(points, candidates), k);
}

// Finds that assignments come round again (Brent's method, with one assignment kept), so that the
// periods in between need not be run: an assignment and the rule determine all that follow, up to
// the next repair.
class CycleDetector {
 public:
  /// Number of rounds that lead back to `current`, in whole periods; 0 where none is known.
  int rounds_to_skip(int round, HClusterKMeans::ClusterMap const& current) {
    if (round > anchor_round_ && current == anchor_) {
      int const period = round - anchor_round_;
      return (most_rounds - 1 - round) / period * period;
    }
    if (round >= next_anchor_round_) {
      anchor_ = current;
      anchor_round_ = round;
      next_anchor_round_ = 2 * round + 1;
    }
    return 0;
  }
  void forget() { anchor_.clear(); }

 private:
  HClusterKMeans::ClusterMap anchor_;
  int anchor_round_ = 0;
  int next_anchor_round_ = 0;
};

void update(std::vector<HPointN> const& points, HClusterKMeans::ClusterMap const& clusters,
            int rule, std::vector<HPointN>& means) {
  DistanceTable const table(morva::compress(points));
  morva::CenterFinder finder;
  for (auto const& [key, members] : clusters) {
    if (key >= 0 && static_cast<std::size_t>(key) < means.size()) {
      means[static_cast<std::size_t>(key)] =
          morva::expand(moved_mean(finder, table, members, rule));
    }
  }
}

}  // namespace

HClusterKMeans::HClusterKMeans() = default;
HClusterKMeans::HClusterKMeans(HClusterKMeans const& other) = default;
HClusterKMeans& HClusterKMeans::operator=(HClusterKMeans const& other) = default;
HClusterKMeans::~HClusterKMeans() = default;

void HClusterKMeans::set_k(int const& k) {
  mi_k = k;
}

void HClusterKMeans::set_use_canopy(bool use_canopy) {
  mb_use_canopy = use_canopy;
}

int HClusterKMeans::get_cluster_type() const {
  return 0;
}

std::vector<SparsePoint> HClusterKMeans::load_means() const {
  return is_in_place() ? means_ : morva::compress(vt_mean);
}

void HClusterKMeans::store_means(std::vector<SparsePoint> means) {
  if (is_in_place()) {
    means_ = std::move(means);
    return;
  }
  vt_mean.clear();
  for (SparsePoint const& mean : means) {
    vt_mean.push_back(morva::expand(mean));
  }
}

bool HClusterKMeans::init() {
  if (mi_k < 0) {
    return false;
  }
  if (mi_k == 1) {
    morva::CenterFinder finder;
    store_means({moved_mean(finder, *table(), vt_index, arithmetic_means)});
    return true;
  }
  if (mi_k > mi_count) {
    mi_k = mi_count;
    if (is_in_place()) {
      means_ = table()->points();
    } else {
      vt_mean = vt_point;
    }
    return true;
  }
  if (!(mb_use_canopy ? seed_with_canopies() : seed_with_farthest_points())) {
    return false;
  }
  auto const found = static_cast<long long>(is_in_place() ? means_.size() : vt_mean.size());
  if (mi_k > found) {
    morva::log_line(2, tag, __LINE__, L"Not enough to be divided to ", HString(mi_k, false),
                    L" class.");
    mi_k = found;
  }
  return mi_k == found;
}

bool HClusterKMeans::seed_with_canopies() {
  std::shared_ptr<DistanceTable const> const points = table();
  HClusterCanopy canopy;
  canopy.set_k(mi_k);
  canopy.cluster_in_place(points);
  morva::CenterFinder finder;
  std::vector<std::vector<int> const*> canopies;
  for (std::vector<int> const& members : canopy.vt_result) {
    canopies.push_back(&members);
  }
  std::vector<SparsePoint> means = moved_means(finder, *points, canopies, arithmetic_means);
  if (mi_k == 0) {
    mi_k = static_cast<long long>(means.size());
  }
  store_means(std::move(means));
  return true;
}

bool HClusterKMeans::seed_with_farthest_points() {
  if (mi_k == 0) {
    return false;
  }
  if (!is_in_place()) {
    return get_k_means(vt_mean);
  }
  std::shared_ptr<DistanceTable const> const points = table();
  for (int const seed : farthest_first(*points, vt_index, mi_k)) {
    means_.push_back((*points)[static_cast<std::size_t>(seed)]);
  }
  return !means_.empty();
}

bool HClusterKMeans::get_k_means(std::vector<HPointN>& means) {
  std::vector<int> const seeds = farthest_first(*table(), vt_index, mi_k);
  for (int const seed : seeds) {
    means.push_back(vt_point[static_cast<std::size_t>(seed)]);
  }
  return !seeds.empty();
}

bool HClusterKMeans::cluster() {
  std::shared_ptr<DistanceTable const> const points = table();
  // The seeds were found through the points' columns; from here on the means' are.
  points->release_all_but_floats();
  MeanMover mover(*points, point_count(), load_means(), mean_count());
  CycleDetector cycles;
  ClusterMap previous;
  std::vector<ClusterMap> seen;
  for (int round = 0; round < most_rounds; ++round) {
    ClusterMap current = mover.assign();
    if (current == previous) {
      if (!is_exist_empty_cluster(current)) {
        break;
      }
      morva::fill_empty_clusters(*points, point_count(), current);
      if (std::find(seen.begin(), seen.end(), current) != seen.end()) {
        break;
      }
      seen.push_back(current);
      cycles.forget();
    }
    round += cycles.rounds_to_skip(round, current);
    mover.move(current, previous);
    previous = std::move(current);
  }
  if (mover.has_moved()) {
    store_means(mover.take_means());
  }
  for (auto& [key, members] : previous) {
    vt_result.push_back(std::move(members));
  }
  return !vt_result.empty();
}

int HClusterKMeans::get_max_distance_index(std::vector<int> const& seeds,
                                           std::vector<int> const& candidates) const {
  int farthest = -1;
  double greatest = 0.0;
  for (int const candidate : candidates) {
    double const sum = get_distance_sum(candidate, seeds);
    if (sum > greatest) {
      greatest = sum;
      farthest = candidate;
    }
  }
  return farthest;
}

int HClusterKMeans::get_mean_nearest_index(int const& point) const {
  int nearest = 0;
  double least = morva::no_distance;
  auto const count = std::min(mi_k, static_cast<long long>(vt_mean.size()));
  for (int mean = 0; mean < count; ++mean) {
    double const distance = HPointN::get_distance(vt_mean[static_cast<std::size_t>(mean)],
                                                  vt_point[static_cast<std::size_t>(point)]);
    if (distance <= least) {
      least = distance;
      nearest = mean;
    }
  }
  return nearest;
}

void HClusterKMeans::get_mean_cluster(ClusterMap& clusters) const {
  std::vector<SparsePoint> means = load_means();
  std::shared_ptr<DistanceTable const> const points = table();
  morva::NearestMeans search(*points);
  clusters = assign(*points, point_count(), means, mean_count(), search);
}

std::size_t HClusterKMeans::mean_count() const {
  return static_cast<std::size_t>(std::max(mi_k, 0LL));
}

bool HClusterKMeans::is_exist_empty_cluster(ClusterMap const& clusters) const {
  return std::any_of(clusters.begin(), clusters.end(),
                     [](auto const& cluster) { return cluster.second.empty(); });
}

void HClusterKMeans::update_mean(ClusterMap const& clusters, std::vector<HPointN>& means) {
  update(vt_point, clusters, arithmetic_means, means);
}

void HClusterKMeans::update_mean_kmedians(ClusterMap const& clusters, std::vector<HPointN>& means) {
  update(vt_point, clusters, medians, means);
}

int HClusterKMeans::get_mean_farest_index(std::vector<int> const& members,
                                          std::map<int, double>& distances) const {
  HPointN const center = get_center_point(members);
  int farthest = 0;
  double greatest = 0.0;
  for (int const member : members) {
    if (member < 0 || member >= mi_count) {
      continue;
    }
    double const distance =
        HPointN::get_distance(vt_point[static_cast<std::size_t>(member)], center);
    distances[member] = distance;
    if (distance > greatest) {
      greatest = distance;
      farthest = member;
    }
  }
  return farthest;
}

void HClusterKMeans::trim_mean_cluster(ClusterMap& clusters) const {
  morva::fill_empty_clusters(*table(), point_count(), clusters);
}
