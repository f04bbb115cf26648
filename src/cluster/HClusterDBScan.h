#pragma once

#include <memory>
#include <vector>

#include "cluster/HClusterBase.h"
#include "host/export.h"
#include "numeric/HPointN.h"

namespace morva {
class NeighbourMatrix;
}

/// Density clustering: points with enough neighbours (kernel points) form groups with the kernel
/// points behind them, groups that share a point merge, and border points join the first group that
/// holds a neighbour. Noise points are in no cluster.
///
/// After Ester, Kriegel, Sander, Xu, "A density-based algorithm for discovering clusters", KDD
/// 1996, with a construction of its own: a group that has absorbed group j goes on with the groups
/// from its own position + 2, and groups are never compared with those before them. Parts of a
/// chain can therefore stay apart and a kernel point can stand in two clusters. Neighbourhood is a
/// distance strictly below eps, or a cosine similarity strictly above a threshold. Nothing is
/// logged.
class MORVA_EXPORT HClusterDBScan : public HClusterBase {
 public:
  /// Neighbourhood by similarity instead of distance.
  bool mb_use_similarity = false;
  /// `mark_kernel_point` has been called.
  bool mb_mark_kernel = false;
  /// `mark_border_point` has been called.
  bool mb_mark_border = false;
  /// `mark_noise_point` has been called.
  bool mb_mark_noise = false;
  /// The kernel points, ascending.
  std::vector<int> vt_kernel;
  /// The points that are no kernel points but have one as a neighbour, ascending.
  std::vector<int> vt_border;
  /// All others, ascending.
  std::vector<int> vt_noise;
  /// Neighbours are nearer than this.
  double md_eps = 0.0;
  /// With `mb_use_similarity`, neighbours have a greater cosine than this.
  double md_similarity = 0.0;
  /// Neighbours, the point itself included, that make a kernel point.
  int mi_min_points = 0;

  HClusterDBScan();
  ~HClusterDBScan();

  /// Sets `md_eps`.
  void set_eps(double const& eps);
  /// Leaves `mb_use_similarity` as it is.
  void set_similarity(double const& similarity);
  /// Sets `mi_min_points`.
  void set_min_ponits(int const& min_points);
  /// Does nothing, and leaves `out` as it was: read `vt_kernel`.
  void get_vt_kernel(std::vector<int>& out);
  /// Does nothing: read `vt_border`.
  void get_vt_border(std::vector<int>& out);
  /// Does nothing: read `vt_noise`.
  void get_vt_noise(std::vector<int>& out);
  using HClusterBase::cluster;
  /// 1.
  int get_cluster_type() const override;
  /// True when there is a cluster. What is no point leaves `vt_kernel`. Memory beside the points:
  /// eight bytes for each pair of neighbours, at most two bits for each pair of points, which is
  /// what it takes where all are neighbours of all. Behind the search for neighbours, time grows
  /// with their number.
  bool cluster() override;
  /// The distance is below `md_eps`.
  bool is_less_than_eps(HPointN const& a, HPointN const& b) const;
  /// The cosine is above `md_similarity`; a NaN is not.
  bool is_greater_than_similarity(HPointN const& a, HPointN const& b) const;
  /// Whether the two are neighbours, by distance or similarity.
  bool is_in_range(HPointN const& a, HPointN const& b) const;
  /// Whether the list holds the index. Linear.
  bool is_in_vt_point(int const& index, std::vector<int> const& list) const;
  /// Whether an element of `b` is in `a`.
  bool is_intersect_between_vt(std::vector<int> const& a, std::vector<int> const& b) const;
  /// `out` becomes the union, each element once, ascending. `out` may be `a` or `b`.
  void union_both_vt(std::vector<int> const& a, std::vector<int> const& b,
                     std::vector<int>& out) const;
  /// Fills `vt_kernel`. A second call does nothing.
  void mark_kernel_point();
  /// Fills `vt_border`; behind `mark_kernel_point`.
  void mark_border_point();
  /// Fills `vt_noise`; behind both.
  void mark_noise_point();

 private:
  std::shared_ptr<morva::NeighbourMatrix const> neighbours() const;
  void hand_out_border_points();

  // Made once for a run.
  std::shared_ptr<morva::NeighbourMatrix const> neighbours_;
};
