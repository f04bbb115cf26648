#pragma once

#include <vector>

#include "cluster/HClusterBase.h"
#include "host/export.h"

/// Canopy clustering in one greedy pass: the first point that is left is a seed, and every point
/// within T2 of it joins its cluster. The clusters are disjoint; a run can search for the T2 that
/// gives a wanted number of them.
///
/// After McCallum, Nigam, Ungar, "Efficient clustering of high-dimensional data sets with
/// application to reference matching", KDD 2000; unlike there, T1 takes no part in forming the
/// clusters. Nothing is logged.
class MORVA_EXPORT HClusterCanopy : public HClusterBase {
 public:
  /// Wanted number of clusters; 0: none in particular.
  long long mi_k = 0;
  /// Outer radius. It is checked and has no other effect.
  double md_T1 = 0.0;
  /// Radius within which a point joins, the border included. The search changes it; after a run it
  /// holds the value that the search stopped on.
  double md_T2 = 0.0;

  HClusterCanopy();
  ~HClusterCanopy();

  /// Sets `mi_k`.
  void set_k(long long const& k);
  /// Sets `md_T1`.
  void set_T1(double const& t1);
  /// Sets `md_T2`.
  void set_T2(double const& t2);
  using HClusterBase::cluster;
  /// 2.
  int get_cluster_type() const override;
  /// Refuses negative parameters, and a T1 that is not at least T2. With both radii 0.0, T2 becomes
  /// the mean pair distance and T1 three times that.
  bool init() override;
  /// A pass, and with `mi_k` above 0 the search. True also when the search missed.
  bool cluster() override;
  /// One pass over `indices` with the present T2: every index in exactly one cluster, the seed
  /// first, the others in the order of `indices`.
  void start(std::vector<int> const& indices, std::vector<std::vector<int>>& canopies);
  /// Moves what lies within T2 of the seed from `remaining` behind the elements of `canopy`.
  /// Elements that `canopy` holds already leave `remaining` too.
  void get_vt_less_t2(int const& seed, std::vector<int>& remaining, std::vector<int>& canopy);
  /// Searches, by doubling and halving, the T2 at which a pass gives `mi_k` clusters, starting from
  /// the number in `vt_result`, which then holds the last pass. The search ends at that number,
  /// with a T2 below 1e-6, with a step that no longer changes T2, and after 2,000 steps; the result
  /// is true in all these cases. False, with nothing changed, when a radius is 0.0.
  bool cluster_k(std::vector<int> const& indices);
  /// One step of the search up: `low` becomes `md_T2`, which goes to the middle of it and `high`,
  /// or doubles while `high` is 0.0.
  void increase_t2(double& low, double& high);
  /// One step down: `high` becomes `md_T2`, which goes to the middle of it and `low`.
  void decrease_t2(double& low, double& high);
};
