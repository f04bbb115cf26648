#include "cluster/HClusterDBScan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>
#include <span>
#include <utility>

#include "cluster/internal/kernel_groups.h"
#include "cluster/internal/members.h"
#include "cluster/internal/neighbour_matrix.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/divided_search.h"

HClusterDBScan::HClusterDBScan() = default;
HClusterDBScan::~HClusterDBScan() = default;

void HClusterDBScan::set_eps(double const& eps) {
  md_eps = eps;
}

void HClusterDBScan::set_similarity(double const& similarity) {
  md_similarity = similarity;
}

void HClusterDBScan::set_min_ponits(int const& min_points) {
  mi_min_points = min_points;
}

void HClusterDBScan::get_vt_kernel(std::vector<int>& /*out*/) {}

void HClusterDBScan::get_vt_border(std::vector<int>& /*out*/) {}

void HClusterDBScan::get_vt_noise(std::vector<int>& /*out*/) {}

int HClusterDBScan::get_cluster_type() const {
  return 1;
}

bool HClusterDBScan::is_less_than_eps(HPointN const& a, HPointN const& b) const {
  return HPointN::get_distance(a, b) < md_eps;
}

bool HClusterDBScan::is_greater_than_similarity(HPointN const& a, HPointN const& b) const {
  return HPointN::get_cos_similarity(a, b) > md_similarity;
}

bool HClusterDBScan::is_in_range(HPointN const& a, HPointN const& b) const {
  return mb_use_similarity ? is_greater_than_similarity(a, b) : is_less_than_eps(a, b);
}

bool HClusterDBScan::is_in_vt_point(int const& index, std::vector<int> const& list) const {
  return std::find(list.begin(), list.end(), index) != list.end();
}

bool HClusterDBScan::is_intersect_between_vt(std::vector<int> const& a,
                                             std::vector<int> const& b) const {
  std::set<int> const elements(a.begin(), a.end());
  return std::any_of(b.begin(), b.end(), [&](int element) { return elements.contains(element); });
}

void HClusterDBScan::union_both_vt(std::vector<int> const& a, std::vector<int> const& b,
                                   std::vector<int>& out) const {
  std::set<int> elements(a.begin(), a.end());
  elements.insert(b.begin(), b.end());
  out.assign(elements.begin(), elements.end());
}

std::shared_ptr<morva::NeighbourMatrix const> HClusterDBScan::neighbours() const {
  if (neighbours_) {
    return neighbours_;
  }
  std::shared_ptr<morva::DistanceTable const> const points = table();
  morva::NeighbourRows rows(points->size());
  if (mb_use_similarity) {
    std::vector<double> similarities(points->size());
    std::vector<std::uint32_t> row;
    for (std::size_t i = 0; i < points->size(); ++i) {
      points->similarities((*points)[i], i, std::span(similarities).subspan(i));
      row.clear();
      for (std::size_t j = i; j < points->size(); ++j) {
        if (similarities[j] > md_similarity) {
          row.push_back(static_cast<std::uint32_t>(j));
        }
      }
      rows.append(row);
    }
  } else {
    morva::divided::for_each_neighbourhood(
        *points, md_eps, morva::DistanceTable::Border::outside,
        [&](std::size_t /*i*/, std::span<std::uint32_t const> near) { rows.append(near); });
  }
  // Most of what found the neighbours makes room for their other side.
  points->release_all_but_floats();
  return std::make_shared<morva::NeighbourMatrix const>(std::move(rows));
}

void HClusterDBScan::mark_kernel_point() {
  if (mb_mark_kernel) {
    return;
  }
  std::shared_ptr<morva::NeighbourMatrix const> const matrix = neighbours();
  for (std::size_t i = 0; i < point_count(); ++i) {
    auto const count = static_cast<long long>(matrix->count_below(i, point_count()));
    if (mi_min_points <= count) {
      vt_kernel.push_back(static_cast<int>(i));
    }
  }
  mb_mark_kernel = true;
}

void HClusterDBScan::mark_border_point() {
  if (!mb_mark_kernel) {
    mark_kernel_point();
  }
  std::vector<int> others = vt_index;
  morva::remove_each(vt_kernel, others);
  std::shared_ptr<morva::NeighbourMatrix const> const matrix = neighbours();
  morva::IndexSet kernels(matrix->size());
  for (int const kernel : vt_kernel) {
    if (matrix->has_point(kernel)) {
      kernels.insert(static_cast<std::size_t>(kernel));
    }
  }
  std::copy_if(others.begin(), others.end(), std::back_inserter(vt_border), [&](int point) {
    return matrix->has_point(point) &&
           matrix->has_neighbour_in(static_cast<std::size_t>(point), kernels);
  });
  mb_mark_border = true;
}

void HClusterDBScan::mark_noise_point() {
  if (vt_border.empty()) {
    mark_border_point();
  }
  std::vector<int> others = vt_index;
  morva::remove_each(vt_kernel, others);
  morva::remove_each(vt_border, others);
  vt_noise = std::move(others);
  mb_mark_noise = true;
}

bool HClusterDBScan::cluster() {
  neighbours_.reset();
  neighbours_ = neighbours();
  mark_kernel_point();
  mark_border_point();
  mark_noise_point();
  std::erase_if(vt_kernel, [this](int kernel) { return !neighbours_->has_point(kernel); });
  vt_result = morva::merge_kernel_groups(*neighbours_, vt_kernel);
  hand_out_border_points();
  neighbours_.reset();
  return !vt_result.empty();
}

void HClusterDBScan::hand_out_border_points() {
  // Walking the groups in order finds a neighbour in the first group that holds one.
  constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
  std::vector<std::size_t> first_group(neighbours_->size(), none);
  for (std::size_t group = vt_result.size(); group-- > 0;) {
    for (int const member : vt_result[group]) {
      first_group[static_cast<std::size_t>(member)] = group;
    }
  }
  for (int const point : vt_border) {
    if (!neighbours_->has_point(point)) {
      continue;
    }
    std::size_t group = none;
    neighbours_->for_each(static_cast<std::size_t>(point), [&](std::size_t neighbour) {
      group = std::min(group, first_group[neighbour]);
    });
    if (group != none) {
      vt_result[group].push_back(point);
      std::size_t& first = first_group[static_cast<std::size_t>(point)];
      first = std::min(first, group);
    }
  }
}
