#include "cluster/internal/empty_cluster_repair.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "cluster/internal/members.h"
#include "numeric/internal/center_finder.h"

namespace morva {

namespace {

// A point and its distance from the center of its cluster, of which only bounds may be known.
struct Candidate {
  std::size_t center;
  double low;
  double high;
};

using Candidates = std::map<int, Candidate>;

// The square of the distance lies between low and high, as `DistanceTable` bounds it; where no
// bound holds, the distance is measured.
class CenterDistances {
 public:
  CenterDistances(DistanceTable const& points, std::size_t count)
      : points_(points), count_(count) {}

  void add_cluster(std::vector<int> const& members) {
    std::vector<SparsePoint const*> const valid = valid_members(points_.points(), members);
    centers_.push_back(valid.empty()
                           ? SparsePoint()
                           : finder_.mean(points_[0].n, valid, static_cast<double>(valid.size())));
    SparsePoint const& center = centers_.back();
    dense_.resize(std::max(dense_.size(), column_count({&center, 1})));
    for (std::size_t i = 0; i < center.columns.size(); ++i) {
      dense_[center.columns[i]] = center.values[i];
    }
    for (int const member : members) {
      if (member >= 0 && static_cast<std::size_t>(member) < count_) {
        candidates_[member] = bound(points_[static_cast<std::size_t>(member)], center);
      }
    }
    for (std::uint32_t const column : center.columns) {
      dense_[column] = 0.0;
    }
  }

  // The `count` farthest points, farthest first.
  std::vector<int> farthest(std::size_t count) const {
    if (count == 0) {
      return {};
    }
    std::vector<double> lows;
    for (auto const& [point, candidate] : candidates_) {
      lows.push_back(candidate.low);
    }
    std::size_t const surplus = lows.size() - std::min(lows.size(), count);
    std::nth_element(lows.begin(), lows.begin() + static_cast<std::ptrdiff_t>(surplus), lows.end());
    double const reach = surplus == 0 ? -std::numeric_limits<double>::infinity() : lows[surplus];
    std::vector<std::pair<double, int>> measured;
    for (auto const& [point, candidate] : candidates_) {
      if (candidate.high >= reach) {
        double const far =
            distance(centers_[candidate.center], points_[static_cast<std::size_t>(point)]);
        if (far > 0.0) {
          measured.emplace_back(far, point);
        }
      }
    }
    std::stable_sort(measured.begin(), measured.end(),
                     [](auto const& a, auto const& b) { return a.first > b.first; });
    std::vector<int> result;
    for (std::size_t i = 0; i < std::min(count, measured.size()); ++i) {
      result.push_back(measured[i].second);
    }
    return result;
  }

 private:
  Candidate bound(SparsePoint const& point, SparsePoint const& center) const {
    std::size_t const index = centers_.size() - 1;
    if (!point.is_tame || !center.is_tame || point.n != center.n) {
      double const infinity = std::numeric_limits<double>::infinity();
      return {index, -infinity, infinity};
    }
    double dot = 0.0;
    for (std::size_t i = 0; i < point.columns.size() && point.columns[i] < dense_.size(); ++i) {
      dot += point.values[i] * dense_[point.columns[i]];
    }
    SquareBounds const bounds(point, center, dot);
    return {index, bounds.low, bounds.high};
  }

  DistanceTable const& points_;
  std::size_t count_;
  CenterFinder finder_;
  std::vector<SparsePoint> centers_;
  // The coordinates of the last center while its members are looked at, else zeros.
  std::vector<double> dense_;
  Candidates candidates_;
};

}  // namespace

void fill_empty_clusters(DistanceTable const& points, std::size_t count,
                         std::map<int, std::vector<int>>& clusters) {
  CenterDistances distances(points, count);
  std::size_t empty_count = 0;
  for (auto const& [key, members] : clusters) {
    if (members.empty()) {
      ++empty_count;
    } else {
      distances.add_cluster(members);
    }
  }
  std::vector<int> const farthest = distances.farthest(empty_count);
  std::size_t next = 0;
  for (auto& [key, members] : clusters) {
    if (!members.empty()) {
      remove_each(farthest, members);
    } else if (next < farthest.size()) {
      members.push_back(farthest[next++]);
    }
  }
}

}  // namespace morva
