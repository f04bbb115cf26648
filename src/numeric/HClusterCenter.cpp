#include "numeric/HClusterCenter.h"

#include <cstddef>

#include "numeric/internal/center_finder.h"
#include "numeric/internal/sparse_point.h"

namespace {

std::vector<morva::SparsePoint> valid_members(std::vector<HPointN> const& points,
                                              std::vector<int> const& members) {
  std::vector<morva::SparsePoint> result;
  for (int const member : members) {
    if (member >= 0 && static_cast<std::size_t>(member) < points.size()) {
      result.push_back(morva::compress(points[static_cast<std::size_t>(member)]));
    }
  }
  return result;
}

std::vector<morva::SparsePoint const*> addresses(std::vector<morva::SparsePoint> const& points) {
  std::vector<morva::SparsePoint const*> result;
  result.reserve(points.size());
  for (morva::SparsePoint const& point : points) {
    result.push_back(&point);
  }
  return result;
}

HPointN mean(long long n, std::vector<morva::SparsePoint> const& members) {
  return morva::expand(
      morva::CenterFinder().mean(n, addresses(members), static_cast<double>(members.size())));
}

}  // namespace

HClusterCenter::HClusterCenter() = default;
HClusterCenter::~HClusterCenter() = default;

HPointN HClusterCenter::get_empty_point(long long const& n) {
  HPointN point;
  if (n >= 1) {
    point.resize(n);
  }
  return point;
}

HPointN HClusterCenter::get_center_point(std::vector<HPointN> const& points,
                                         std::vector<int> const& members) {
  if (points.empty() || members.empty()) {
    return {};
  }
  return mean(points.front().get_n(), valid_members(points, members));
}

HPointN HClusterCenter::get_center_point(std::vector<HPointN> const& points) {
  return points.empty() ? HPointN() : mean(points.front().get_n(), morva::compress(points));
}

HPointN HClusterCenter::get_median_point(std::vector<HPointN> const& points,
                                         std::vector<int> const& members) {
  if (points.empty()) {
    return {};
  }
  std::vector<morva::SparsePoint> const valid = valid_members(points, members);
  if (valid.empty()) {
    return {};
  }
  return morva::expand(morva::CenterFinder().median(points.front().get_n(), addresses(valid)));
}
