#include "numeric/HClusterDistance.h"

#include <cstddef>

#include "numeric/HClusterCenter.h"
#include "numeric/internal/all_pairs.h"
#include "numeric/internal/no_distance.h"

namespace {

bool is_index(std::vector<HPointN> const& points, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < points.size();
}

double deliver(std::optional<morva::FoundPair> const& pair, double otherwise, int& i, int& j) {
  if (!pair) {
    return otherwise;
  }
  i = static_cast<int>(pair->i);
  j = static_cast<int>(pair->j);
  return pair->distance;
}

using PairSearch = double (*)(std::vector<HPointN> const&, int&, int&);

double find_points(PairSearch search, std::vector<HPointN> const& points, HPointN& a, HPointN& b) {
  int i = 0;
  int j = 0;
  double const distance = search(points, i, j);
  if (!points.empty()) {
    a = points[static_cast<std::size_t>(i)];
    b = points[static_cast<std::size_t>(j)];
  }
  return distance;
}

}  // namespace

HClusterDistance::HClusterDistance() = default;
HClusterDistance::~HClusterDistance() = default;

double HClusterDistance::get_distance(HPointN const& a, HPointN const& b) {
  return HPointN::get_distance(a, b);
}

double HClusterDistance::get_avg_distance(std::vector<HPointN> const& points) {
  return morva::average_distance(morva::DistanceTable(morva::compress(points)));
}

double HClusterDistance::get_min_distance_index(std::vector<HPointN> const& points, int& i,
                                                int& j) {
  morva::DistanceTable const table(morva::compress(points));
  return deliver(morva::closest_pair(table), morva::no_distance, i, j);
}

double HClusterDistance::get_max_distance_index(std::vector<HPointN> const& points, int& i,
                                                int& j) {
  morva::DistanceTable const table(morva::compress(points));
  return deliver(morva::farthest_pair(table), 0.0, i, j);
}

double HClusterDistance::get_distance_sum(HPointN const& point,
                                          std::vector<HPointN> const& points) {
  double sum = 0.0;
  for (HPointN const& other : points) {
    sum += get_distance(other, point);
  }
  return sum;
}

double HClusterDistance::get_distance_sum(std::vector<HPointN> const& points, int const& index,
                                          std::vector<int> const& members) {
  double sum = 0.0;
  if (!is_index(points, index)) {
    return sum;
  }
  for (int const member : members) {
    if (is_index(points, member)) {
      sum += get_distance(points[static_cast<std::size_t>(index)],
                          points[static_cast<std::size_t>(member)]);
    }
  }
  return sum;
}

double HClusterDistance::get_max_radius(std::vector<HPointN> const& points,
                                        std::vector<int> const& members) {
  HPointN const center = HClusterCenter::get_center_point(points, members);
  double radius = 0.0;
  for (int const member : members) {
    if (!is_index(points, member)) {
      continue;
    }
    double const distance = get_distance(center, points[static_cast<std::size_t>(member)]);
    if (distance > radius) {
      radius = distance;
    }
  }
  return radius;
}

double HClusterDistance::get_max_distance_point(std::vector<HPointN> const& points, HPointN& a,
                                                HPointN& b) {
  return find_points(get_max_distance_index, points, a, b);
}

double HClusterDistance::get_min_distance_point(std::vector<HPointN> const& points, HPointN& a,
                                                HPointN& b) {
  return find_points(get_min_distance_index, points, a, b);
}
