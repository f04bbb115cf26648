#pragma once

#include <map>
#include <vector>

#include "cluster/HClusterBase.h"
#include "cluster/cluster_type.h"
#include "host/export.h"
#include "numeric/HPointN.h"

namespace morva {
struct SparsePoint;
}

/// Deterministic K-means (Lloyd's iteration) and K-medians, as `gi_K_ClusterType` says at each
/// iteration. The seeds are the farthest points of each other, or the means of a canopy run.
///
/// An iteration assigns every point to its nearest mean, of equally near ones the last, and moves
/// the means. One that changes no assignment ends the run, unless a cluster is empty: then the
/// points that lie farthest from the centers of their clusters move into the empty ones, and the
/// run goes on until such a repair comes out as one before it did. A result can therefore hold
/// empty clusters. Medians can make a run cycle, so it ends after 1,000 iterations at the latest,
/// with the last assignment.
class MORVA_EXPORT HClusterKMeans : public HClusterBase {
 public:
  /// From the index of a mean to the points assigned to it, ascending. Every mean has its key.
  using ClusterMap = std::map<int, std::vector<int>>;

  /// The seeds after `init`, then the means as they are moved; after a run the last ones.
  std::vector<HPointN> vt_mean;
  /// Number of clusters; `init` may lower it, and takes it from the canopy run where it is 0.
  long long mi_k = 0;
  /// Seeds are the means of a canopy run.
  bool mb_use_canopy = false;

  HClusterKMeans();
  /// Copies parameters, points and results.
  HClusterKMeans(HClusterKMeans const& other);
  /// Copies parameters, points and results.
  HClusterKMeans& operator=(HClusterKMeans const& other);
  ~HClusterKMeans();

  /// Sets `mi_k`.
  void set_k(int const& k);
  /// Sets `mb_use_canopy`.
  void set_use_canopy(bool use_canopy);
  using HClusterBase::cluster;
  /// 0.
  int get_cluster_type() const override;
  /// Makes the seeds. False for a negative `mi_k`, for 0 without canopy, where no seeds are found,
  /// and where the canopy run gives more means than asked for. Where it gives fewer, `mi_k` falls
  /// to their number and one line is logged at level 2. `mi_k` above the number of points falls to
  /// that.
  bool init() override;
  /// The iterations. True when there are clusters. With a `gi_K_ClusterType` other than 0 and 1 the
  /// means stay, and each iteration logs one line at level 1.
  bool cluster() override;
  /// Appends `mi_k` seeds to `means`: the farthest pair, then always the point with the greatest
  /// sum of distances to the seeds so far, of `vt_index`. False, with nothing appended, when there
  /// are not so many points, or no distance above 0.0.
  bool get_k_means(std::vector<HPointN>& means);
  /// Of the candidates, the first with the greatest sum of distances to the seeds; -1 when none has
  /// a sum above 0.0.
  int get_max_distance_index(std::vector<int> const& seeds,
                             std::vector<int> const& candidates) const;
  /// The nearest of the first `mi_k` means, of equally near ones the last. A mean without
  /// coordinates, or farther than 9223372036854775808.0, loses to any other.
  int get_mean_nearest_index(int const& point) const;
  /// Replaces `clusters` by the assignment of all points.
  void get_mean_cluster(ClusterMap& clusters) const;
  /// Whether one of the clusters has no point.
  bool is_exist_empty_cluster(ClusterMap const& clusters) const;
  /// The mean of each cluster becomes the arithmetic mean of its members (`HClusterCenter`). That
  /// of an empty cluster loses its coordinates. A key outside `means` is passed over.
  void update_mean(ClusterMap const& clusters, std::vector<HPointN>& means);
  /// The same with the median of the members.
  void update_mean_kmedians(ClusterMap const& clusters, std::vector<HPointN>& means);
  /// Stores each valid member's distance from the members' arithmetic mean, and returns the first
  /// with the greatest; 0 where none exceeds 0.0.
  int get_mean_farest_index(std::vector<int> const& members,
                            std::map<int, double>& distances) const;
  /// Deals the points that lie farthest from the centers of their clusters out to the empty
  /// clusters, in key order. Points at distance 0.0 stay, so clusters can stay empty.
  void trim_mean_cluster(ClusterMap& clusters) const;

 private:
  std::vector<morva::SparsePoint> load_means() const;
  void store_means(std::vector<morva::SparsePoint> means);
  std::size_t mean_count() const;
  bool seed_with_canopies();
  bool seed_with_farthest_points();

  // The means of a run in place, in place of `vt_mean`.
  std::vector<morva::SparsePoint> means_;
};
