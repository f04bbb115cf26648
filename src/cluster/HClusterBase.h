#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "host/export.h"
#include "numeric/HPointN.h"

namespace morva {
class DistanceTable;
}

/// The frame of a clustering engine: the copy of the points that a run works on, the result, and
/// measures over the points for the engines that derive from it.
///
/// A result is a list of clusters, each a list of indices into the caller's points. An object
/// serves one run: set its parameters, call `cluster` with the points, read the result. Nothing
/// here is logged. Engines share no state but `gi_K_ClusterType`, which K-means reads.
class MORVA_EXPORT HClusterBase {
 public:
  /// Whether `get_out_center_point` has something to read. Only the canopy engine sets it.
  bool mb_finish = false;
  /// Number of points of the run.
  long long mi_count = 0;
  /// The points of the run.
  std::vector<HPointN> vt_point;
  /// All point indices in order.
  std::vector<int> vt_index;
  /// The clusters, lists of indices into the points.
  std::vector<std::vector<int>> vt_result;
  /// Dimension of the first point.
  long long mi_n = 0;

  HClusterBase();
  /// Not virtual: an engine is destroyed as what it was made.
  ~HClusterBase();

  /// The run itself, between `init` and the end of `cluster` with points.
  virtual bool cluster() = 0;
  /// Checks the parameters and prepares the run. Here: true.
  virtual bool init();
  /// -1 here; 0 K-means, 1 DBSCAN, 2 canopy.
  virtual int get_cluster_type() const;

  /// A whole run: `InitBase`, `init`, `cluster`. False as soon as one of them is.
  bool cluster(std::vector<HPointN> const& points);
  /// Copies the points and sets up the indices. False, with nothing changed, for an empty list. The
  /// indices are appended to what `vt_index` holds.
  bool InitBase(std::vector<HPointN> const& points);
  /// Replaces `out` by `vt_result`.
  void get_result(std::vector<std::vector<int>>& out) const;
  /// Replaces `out` by the mean point of each cluster; empty unless `mb_finish` is set.
  void get_out_center_point(std::vector<HPointN>& out) const;

  /// `HClusterCenter::get_empty_point` of `mi_n` coordinates.
  HPointN get_empty_point() const;
  /// `HClusterCenter` over `vt_point`: the mean of the members.
  HPointN get_center_point(std::vector<int> const& members) const;
  /// The median of the members, coordinate by coordinate.
  HPointN get_median_point(std::vector<int> const& members) const;
  /// `HClusterDistance` over `vt_point`: the mean distance of all pairs.
  double get_avg_distance() const;
  /// The smallest distance of a pair.
  double get_min_distance() const;
  /// The same with the indices of the pair.
  double get_min_distance(int& i, int& j) const;
  /// The same with copies of the pair.
  double get_min_distance(HPointN& a, HPointN& b) const;
  /// The largest distance of a pair.
  double get_max_distance() const;
  /// The same with the indices of the pair.
  double get_max_distance(int& i, int& j) const;
  /// The same with copies of the pair.
  double get_max_distance(HPointN& a, HPointN& b) const;
  /// Largest distance from the members' mean to a member.
  double get_max_radius(std::vector<int> const& members) const;
  /// Sum of the distances from one point to the members.
  double get_distance_sum(int const& index, std::vector<int> const& members) const;
  /// Distance of two points; 0.0 where an index is below 0 or not below `mi_count`.
  double get_distance(int const& i, int const& j) const;
  /// Index of the nearest point, of equally near ones the last. Points farther than
  /// 9223372036854775808.0 are not considered; 0 where none is left.
  int get_nearest_index(HPointN const& point) const;
  /// Erases the first element equal to `value`.
  static void remove(int const& value, std::vector<int>& list);

 protected:
  /// The points in the form that the engines measure them in: `vt_point` as it is now, or the
  /// points of a run in place.
  std::shared_ptr<morva::DistanceTable const> table() const;
  /// `mi_count`, as far as there are points.
  std::size_t point_count() const;
  /// Whether this run leaves the points, and all that would be as large as they are, with the
  /// caller: nobody can look at `vt_point` before the engine is gone.
  bool is_in_place() const;

 private:
  friend class HClusterKMeans;
  friend class HSparseClusterMgr;

  /// A run as `cluster`, of at least one point, which leaves `vt_point` empty.
  bool cluster_in_place(std::shared_ptr<morva::DistanceTable const> table);

  // The points of a run in place.
  std::shared_ptr<morva::DistanceTable const> table_;
};
