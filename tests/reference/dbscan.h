#pragma once

#include "reference/measures.h"

namespace reference {

/// A DBSCAN engine with its parameters and what a run leaves.
struct DbScan {
  Matrix points;
  bool use_similarity = false;
  double eps = 0.0;
  double threshold = 0.0;
  int min_points = 0;
  Members kernel;
  Members border;
  Members noise;
  Clusters result;

  bool is_in_range(int i, int j) const {
    return use_similarity ? similarity(row(points, i), row(points, j)) > threshold
                          : distance(row(points, i), row(points, j)) < eps;
  }

  static bool contains(Members const& list, int index) {
    return std::find(list.begin(), list.end(), index) != list.end();
  }

  static bool intersect(Members const& a, Members const& b) {
    return std::any_of(b.begin(), b.end(), [&a](int index) { return contains(a, index); });
  }

  static Members unite(Members const& a, Members const& b) {
    Members united;
    for (Members const* const list : {&a, &b}) {
      for (int const index : *list) {
        if (!contains(united, index)) {
          united.push_back(index);
        }
      }
    }
    std::sort(united.begin(), united.end());
    return united;
  }

  void mark_kernel() {
    for (int i = 0; i < count_of(points); ++i) {
      int neighbours = 0;
      for (int j = 0; j < count_of(points); ++j) {
        neighbours += is_in_range(i, j) ? 1 : 0;
      }
      if (min_points <= neighbours) {
        kernel.push_back(i);
      }
    }
  }

  /// All indices but those of the lists.
  Members rest_without(std::vector<Members> const& lists) const {
    Members rest = all_indices(count_of(points));
    for (Members const& list : lists) {
      for (int const index : list) {
        remove(index, rest);
      }
    }
    return rest;
  }

  void mark_border() {
    for (int const index : rest_without({kernel})) {
      for (int const each : kernel) {
        if (is_in_range(index, each)) {
          border.push_back(index);
          break;
        }
      }
    }
  }

  void mark_noise() { noise = rest_without({kernel, border}); }

  /// For each kernel point, itself and the neighbours behind it.
  Clusters groups() const {
    Clusters all;
    for (std::size_t a = 0; a < kernel.size(); ++a) {
      Members group{kernel[a]};
      for (std::size_t b = a + 1; b < kernel.size(); ++b) {
        if (is_in_range(kernel[a], kernel[b])) {
          group.push_back(kernel[b]);
        }
      }
      all.push_back(group);
    }
    return all;
  }

  /// Merges forward: after a merge the scan goes on at i + 2.
  static void merge(Clusters& all) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      std::size_t j = i + 1;
      while (j < all.size()) {
        if (!all[j].empty() && intersect(all[i], all[j])) {
          all[i] = unite(all[i], all[j]);
          all[j].clear();
          j = i + 2;
        } else {
          ++j;
        }
      }
    }
    std::erase_if(all, [](Members const& group) { return group.empty(); });
  }

  /// Appends a border point to the first group with a member in range.
  void hand_out(int index, Clusters& all) const {
    for (Members& group : all) {
      for (int const member : group) {
        if (is_in_range(index, member)) {
          group.push_back(index);
          return;
        }
      }
    }
  }

  /// A whole run; whether there is a cluster.
  bool run() {
    mark_kernel();
    mark_border();
    mark_noise();
    Clusters all = groups();
    merge(all);
    for (int const index : border) {
      hand_out(index, all);
    }
    result = all;
    return !result.empty();
  }
};

}  // namespace reference
