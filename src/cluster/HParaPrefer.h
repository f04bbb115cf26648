#pragma once

#include <vector>

#include "host/export.h"
#include "numeric/HPointN.h"

namespace morva {
class DistanceTable;
}

/// Proposes a radius for DBSCAN: how far a typical point must reach to have its neighbours, then
/// the mean reach of the points that have one within that.
///
/// A list holds one value for each other point, ascending, NaN last. Values are distances, or
/// cosine similarities, which are treated the same although the most similar one then stands last.
/// Nothing is logged; a mean of nothing is NaN and passes through to the caller.
class MORVA_EXPORT HParaPrefer {
 public:
  HParaPrefer();
  ~HParaPrefer();

  /// The estimate for a point set; 0.0 for an empty one, NaN for a single point, and else 0.0 for a
  /// `min_points` above the number of other points. Holds one list at a time: `smart_eps` over
  /// `get_vt_all` gives the same value.
  static double get_eps(std::vector<HPointN> const& points, int const& min_points,
                        bool use_distance);
  /// Appends the list of each point: the memory of a matrix.
  static void get_vt_all(std::vector<HPointN> const& points,
                         std::vector<std::vector<double>>& lists, bool use_distance);
  /// Distance, or cosine similarity.
  static double get_value(HPointN const& a, HPointN const& b, bool use_distance);
  /// The estimate over lists. First the mean of the largest values that `get_nearest_minpts` picks;
  /// then, over the lists whose smallest value is not above that, the mean of the largest values
  /// that `get_nearest_value` picks with it. 0.0 without lists.
  static double smart_eps(std::vector<std::vector<double>> const& lists, int const& min_points);
  /// Appends the values up to and including the `min_points`-th distinct one that is not 0.0.
  static void get_nearest_minpts(std::vector<double> const& list, int const& min_points,
                                 std::vector<double>& out);
  /// The same of each list; appends one to `out_lists` for each.
  static void get_vt_nearest_minpts(std::vector<std::vector<double>> const& lists,
                                    int const& min_points,
                                    std::vector<std::vector<double>>& out_lists);
  /// Replaces `out` by the first `min_points` values and those behind them up to `avg` +
  /// 0.05999999. A list shorter than `min_points`, or a negative count, gives zeros.
  static void get_nearest_value(std::vector<double> const& list, double const& avg,
                                int const& min_points, std::vector<double>& out);
  /// The same of each list; appends one to `out_lists` for each.
  static void get_vt_nearest_value(std::vector<std::vector<double>> const& lists, double const& avg,
                                   int const& min_points,
                                   std::vector<std::vector<double>>& out_lists);
  /// Largest value, not below 0.0.
  static double get_max_nearest(std::vector<double> const& list);
  /// Smallest value, not above 4503599627370496.0.
  static double get_min_nearest(std::vector<double> const& list);
  /// Replaces `out`.
  static void get_vt_max_nearest(std::vector<std::vector<double>> const& lists,
                                 std::vector<double>& out);
  /// Appends to `out`.
  static void get_vt_min_nearest(std::vector<std::vector<double>> const& lists,
                                 std::vector<double>& out);
  /// Mean in list order; NaN for an empty list.
  static double get_vt_avg(std::vector<double> const& list);
  /// Appends to `out`.
  static void get_vt_vt_avg(std::vector<std::vector<double>> const& lists,
                            std::vector<double>& out);

 private:
  friend class HSparseClusterMgr;

  static double eps_of(morva::DistanceTable const& table, int min_points, bool use_distance);
};
