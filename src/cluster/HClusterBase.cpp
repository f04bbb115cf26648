#include "cluster/HClusterBase.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/no_distance.h"

HClusterBase::HClusterBase() = default;
HClusterBase::~HClusterBase() = default;

bool HClusterBase::init() {
  return true;
}

int HClusterBase::get_cluster_type() const {
  return -1;
}

bool HClusterBase::cluster(std::vector<HPointN> const& points) {
  return InitBase(points) && init() && cluster();
}

bool HClusterBase::cluster_in_place(std::shared_ptr<morva::DistanceTable const> table) {
  table_ = std::move(table);
  mi_count = static_cast<long long>(table_->size());
  mi_n = (*table_)[0].n;
  vt_index.resize(table_->size());
  std::iota(vt_index.begin(), vt_index.end(), 0);
  return init() && cluster();
}

bool HClusterBase::InitBase(std::vector<HPointN> const& points) {
  if (points.empty()) {
    return false;
  }
  vt_point = points;
  mi_count = static_cast<long long>(points.size());
  for (int i = 0; i < mi_count; ++i) {
    vt_index.push_back(i);
  }
  mi_n = vt_point.front().get_n();
  return true;
}

std::shared_ptr<morva::DistanceTable const> HClusterBase::table() const {
  return table_ ? table_ : std::make_shared<morva::DistanceTable const>(morva::compress(vt_point));
}

std::size_t HClusterBase::point_count() const {
  std::size_t const size = table_ ? table_->size() : vt_point.size();
  return std::min(size, static_cast<std::size_t>(std::max(mi_count, 0LL)));
}

bool HClusterBase::is_in_place() const {
  return table_ != nullptr;
}

void HClusterBase::get_result(std::vector<std::vector<int>>& out) const {
  out = vt_result;
}

void HClusterBase::get_out_center_point(std::vector<HPointN>& out) const {
  out.clear();
  if (!mb_finish) {
    return;
  }
  for (std::vector<int> const& members : vt_result) {
    HPointN center = get_empty_point();
    for (int const member : members) {
      center += vt_point[static_cast<std::size_t>(member)];
    }
    center /= static_cast<unsigned long>(members.size());
    out.push_back(std::move(center));
  }
}

HPointN HClusterBase::get_empty_point() const {
  return HClusterCenter::get_empty_point(mi_n);
}

HPointN HClusterBase::get_center_point(std::vector<int> const& members) const {
  return HClusterCenter::get_center_point(vt_point, members);
}

HPointN HClusterBase::get_median_point(std::vector<int> const& members) const {
  return HClusterCenter::get_median_point(vt_point, members);
}

double HClusterBase::get_avg_distance() const {
  return HClusterDistance::get_avg_distance(vt_point);
}

double HClusterBase::get_min_distance() const {
  int i = 0;
  int j = 0;
  return get_min_distance(i, j);
}

double HClusterBase::get_min_distance(int& i, int& j) const {
  return HClusterDistance::get_min_distance_index(vt_point, i, j);
}

double HClusterBase::get_min_distance(HPointN& a, HPointN& b) const {
  return HClusterDistance::get_min_distance_point(vt_point, a, b);
}

double HClusterBase::get_max_distance() const {
  int i = 0;
  int j = 0;
  return get_max_distance(i, j);
}

double HClusterBase::get_max_distance(int& i, int& j) const {
  return HClusterDistance::get_max_distance_index(vt_point, i, j);
}

double HClusterBase::get_max_distance(HPointN& a, HPointN& b) const {
  return HClusterDistance::get_max_distance_point(vt_point, a, b);
}

double HClusterBase::get_max_radius(std::vector<int> const& members) const {
  return HClusterDistance::get_max_radius(vt_point, members);
}

double HClusterBase::get_distance_sum(int const& index, std::vector<int> const& members) const {
  return HClusterDistance::get_distance_sum(vt_point, index, members);
}

double HClusterBase::get_distance(int const& i, int const& j) const {
  if (i < 0 || j < 0 || i >= mi_count || j >= mi_count) {
    return 0.0;
  }
  return HClusterDistance::get_distance(vt_point[static_cast<std::size_t>(i)],
                                        vt_point[static_cast<std::size_t>(j)]);
}

int HClusterBase::get_nearest_index(HPointN const& point) const {
  int nearest = 0;
  double least = morva::no_distance;
  for (std::size_t i = 0; i < vt_point.size(); ++i) {
    double const distance = HClusterDistance::get_distance(point, vt_point[i]);
    if (distance <= least) {
      least = distance;
      nearest = static_cast<int>(i);
    }
  }
  return nearest;
}

void HClusterBase::remove(int const& value, std::vector<int>& list) {
  auto const found = std::find(list.begin(), list.end(), value);
  if (found != list.end()) {
    list.erase(found);
  }
}
