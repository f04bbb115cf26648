#include "cluster/HClusterCanopy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

#include "cluster/internal/members.h"
#include "numeric/internal/canopies.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/divided_search.h"

namespace {

constexpr double least_t2 = 1e-6;
constexpr int most_steps = 2000;
constexpr std::size_t no_limit = std::numeric_limits<std::size_t>::max();

bool is_every_index(std::vector<int> const& indices, std::size_t count) {
  for (std::size_t i = 0; i < indices.size(); ++i) {
    if (indices[i] != static_cast<int>(i)) {
      return false;
    }
  }
  return indices.size() == count;
}

// Canopies over any indices, repeated ones and such that are no points among them.
std::vector<std::vector<int>> canopies_over(std::vector<int> const& indices,
                                            morva::DistanceTable const& table, std::size_t count,
                                            double t2, std::size_t most) {
  auto const is_point = [count](int index) {
    return index >= 0 && static_cast<std::size_t>(index) < count;
  };
  std::vector<std::vector<int>> canopies;
  std::vector<int> remaining = indices;
  std::vector<char> is_near(table.size());
  while (!remaining.empty() && canopies.size() < most) {
    int const seed = remaining.front();
    std::vector<int> canopy = {seed};
    bool const is_seed_point = is_point(seed);
    if (is_seed_point) {
      table.within(table[static_cast<std::size_t>(seed)], 0, t2,
                   morva::DistanceTable::Border::inside, is_near);
    }
    std::vector<int> left;
    bool leaves_seed = true;
    for (int const index : std::span<int const>(remaining).subspan(1)) {
      // What is no point has distance 0.0.
      bool const joins = is_seed_point && is_point(index)
                             ? is_near[static_cast<std::size_t>(index)] != 0
                             : 0.0 <= t2;
      // A repeated seed goes once with the seed, whether it joins or not.
      if (!joins && index == seed && leaves_seed) {
        leaves_seed = false;
        continue;
      }
      (joins ? canopy : left).push_back(index);
    }
    canopies.push_back(std::move(canopy));
    remaining = std::move(left);
  }
  return canopies;
}

// One canopy after the other, as `HClusterCanopy::start`, but no more than `most` of them. The
// processes of a group run over all points.
std::vector<std::vector<int>> pass(morva::DistanceTable const& table, std::size_t count,
                                   std::vector<int> const& indices, double t2, std::size_t most) {
  bool const is_usual = count == table.size() && is_every_index(indices, count);
  return is_usual ? morva::canopies(table, t2, most)
                  : canopies_over(indices, table, count, t2, most);
}

}  // namespace

HClusterCanopy::HClusterCanopy() = default;
HClusterCanopy::~HClusterCanopy() = default;

void HClusterCanopy::set_k(long long const& k) {
  mi_k = k;
}

void HClusterCanopy::set_T1(double const& t1) {
  md_T1 = t1;
}

void HClusterCanopy::set_T2(double const& t2) {
  md_T2 = t2;
}

int HClusterCanopy::get_cluster_type() const {
  return 2;
}

bool HClusterCanopy::init() {
  if (mi_k < 0 || md_T1 < 0.0 || md_T2 < 0.0) {
    return false;
  }
  if (md_T1 == 0.0 && md_T2 == 0.0) {
    md_T2 = morva::divided::average_distance(*table());
    md_T1 = 3.0 * md_T2;
  }
  return !(md_T1 < md_T2);
}

bool HClusterCanopy::cluster() {
  std::vector<int> const indices = vt_index;
  start(indices, vt_result);
  if (mi_k > 0 && static_cast<unsigned long long>(mi_k) != vt_result.size()) {
    cluster_k(indices);
  }
  mb_finish = true;
  return true;
}

void HClusterCanopy::start(std::vector<int> const& indices,
                           std::vector<std::vector<int>>& canopies) {
  std::shared_ptr<morva::DistanceTable const> const points = table();
  canopies = pass(*points, point_count(), indices, md_T2, no_limit);
}

void HClusterCanopy::get_vt_less_t2(int const& seed, std::vector<int>& remaining,
                                    std::vector<int>& canopy) {
  for (int const index : remaining) {
    if (get_distance(index, seed) <= md_T2) {
      canopy.push_back(index);
    }
  }
  morva::remove_each(canopy, remaining);
}

bool HClusterCanopy::cluster_k(std::vector<int> const& indices) {
  if (md_T1 == 0.0 || md_T2 == 0.0) {
    return false;
  }
  std::shared_ptr<morva::DistanceTable const> const points = table();
  auto const wanted = static_cast<std::size_t>(mi_k);
  double low = 0.0;
  double high = 0.0;
  bool is_whole = true;
  for (int step = 0; step < most_steps && wanted != vt_result.size(); ++step) {
    double const before = md_T2;
    if (wanted < vt_result.size()) {
      increase_t2(low, high);
    } else {
      decrease_t2(low, high);
    }
    // One canopy more than wanted tells as much as all of them.
    vt_result =
        pass(*points, point_count(), indices, md_T2, wanted == no_limit ? no_limit : wanted + 1);
    is_whole = vt_result.size() <= wanted;
    bool const stays = md_T2 == before || std::isnan(md_T2);
    if (md_T2 < least_t2 || stays) {
      break;
    }
  }
  if (!is_whole) {
    start(indices, vt_result);
  }
  return true;
}

void HClusterCanopy::increase_t2(double& low, double& high) {
  low = md_T2;
  md_T2 = high == 0.0 ? md_T2 + md_T2 : (high + md_T2) * 0.5;
}

void HClusterCanopy::decrease_t2(double& low, double& high) {
  high = md_T2;
  md_T2 = (low + md_T2) * 0.5;
}
