#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "numeric/HProcessGroup.h"
#include "numeric/internal/float_lanes.h"
#include "numeric/internal/inverted_index.h"
#include "numeric/internal/lanes.h"
#include "numeric/internal/postings.h"
#include "numeric/internal/rows.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// What the searches make counts the values of all points in 32 bits: throws `std::length_error`
/// where there are more of them.
void require_countable(std::size_t values);

/// A list of points in the form in which the engines measure them, and the searches that they are
/// made of: of one point among all. Those of all pairs, in all_pairs.h, are made of these.
///
/// All results are those of measuring pair by pair in list order with `HPointN`, bit for bit. Where
/// most coordinates are zero, a search bounds the squares of all distances by
/// |x|^2 + |y|^2 - 2xy, whose products are few, and measures only what the bounds leave open; data
/// that bounds do not hold for is measured whole. Where few are zero, the searches over all pairs
/// do the same with products in single precision. What the searches need beside the points is made
/// when first needed, so that a table is for one thread.
class DistanceTable {
 public:
  enum class Form { sparse, dense };
  enum class Border { outside, inside };
  /// Whether a distance is within a limit: below it, or with the border inside not above it.
  static bool is_in(double distance, double limit, Border border) {
    return border == Border::inside ? distance <= limit : distance < limit;
  }
  struct Found {
    std::size_t index;
    double distance;
  };

  /// In the given form, else in that which suits the share of zeros, counted for so many points as
  /// `Lanes` has room for: few points are sparse however few zeros they have. Throws where there
  /// are more values than `require_countable` lets pass.
  explicit DistanceTable(std::vector<SparsePoint> points, std::optional<Form> form = {});

  std::size_t size() const { return points_.size(); }
  Form form() const { return form_; }
  /// Whether the searches that bound distances by the few coordinates that are not zero are for
  /// these points: sparse ones, all tame and of one dimension.
  bool has_sparse_bounds() const { return form_ == Form::sparse && is_tame_ && is_uniform_; }
  std::vector<SparsePoint> const& points() const { return points_; }
  /// Frees what the searches made, `index` and `own_points` among it, until one needs it again; all
  /// but `floats`, which the dense searches that follow begin with.
  void release_all_but_floats() const;
  /// Takes the points out; the table is then good for nothing else.
  std::vector<SparsePoint> take_points() { return std::move(points_); }
  SparsePoint const& operator[](std::size_t i) const { return points_[i]; }

  /// The processes that hold the same points and share the work on them; null where this one works
  /// alone.
  std::shared_ptr<HProcessGroup> const& group() const { return group_; }
  /// The lists that share the table, as one that is const, share its group.
  void set_group(std::shared_ptr<HProcessGroup> group) const;
  /// Of the points those that are dealt to this process, by turns: point i is the group's
  /// `i % size`-th process's. A copy of them in this table's form; with a group only.
  DistanceTable const& own_points() const;

  /// Bounds in single precision; null where few coordinates are not zero, or no bounds hold.
  FloatLanes const* floats() const;
  /// The points by their coordinates; null where few are zero, no bounds hold, there are so few
  /// points that looking at each is no slower, or such lengths that an index does not suit them.
  InvertedIndex const* index() const;

  /// Distances, and cosine similarities, of `x` and the points from `first` on.
  void distances(SparsePoint const& x, std::size_t first, std::span<double> out) const;
  void similarities(SparsePoint const& x, std::size_t first, std::span<double> out) const;

  /// For the points from `first` on: 1 where the distance from `x` `is_in`, else 0.
  void within(SparsePoint const& x, std::size_t first, double limit, Border border,
              std::span<char> out) const;
  /// The nearest point, of equally near ones the last; 0 where all are farther than `no_distance`.
  std::size_t nearest(SparsePoint const& x) const;
  /// Of the points from `first` on, the first of those with the greatest distance above `floor`,
  /// and with the smallest one below `ceiling`.
  std::optional<Found> farthest(SparsePoint const& x, std::size_t first, double floor) const;
  std::optional<Found> closest(SparsePoint const& x, std::size_t first, double ceiling) const;

  /// The `count` smallest distances, and similarities, of point i and the others, ascending.
  std::vector<double> smallest_distances(std::size_t i, std::size_t count) const;
  std::vector<double> smallest_similarities(std::size_t i, std::size_t count) const;

  /// The greatest distance of point i and another that is not above the limit; 0.0 where there is
  /// none.
  double greatest_within(std::size_t i, double limit) const;

  /// Calls `visit(i, distances)` for each row i of a part in order, with the distances of point i
  /// and all behind it, measured some rows at a time.
  using VisitDistances = std::function<void(std::size_t i, std::span<double const> distances)>;
  void for_each_row(Rows rows, VisitDistances const& visit) const;

 private:
  struct Bounds {
    std::vector<double> low;
    std::vector<double> high;
  };
  std::variant<Postings, Lanes> const& columns() const;
  bool bound_squares(SparsePoint const& x, std::size_t first, Bounds& bounds) const;
  std::vector<double> all_distances(SparsePoint const& x, std::size_t first) const;
  void mark_unequal(SparsePoint const& x, std::size_t first, std::span<double> out,
                    double value) const;
  void visit_dense(Rows rows, VisitDistances const& visit) const;
  void visit_sparse(Rows rows, VisitDistances const& visit) const;
  void visit_row(std::size_t i, std::span<double> distances, VisitDistances const& visit) const;

  std::vector<SparsePoint> points_;
  Form form_;
  // Of sparse points.
  std::vector<SquareBounds::Part> bound_parts_;
  mutable std::optional<std::variant<Postings, Lanes>> columns_;
  mutable std::optional<FloatLanes> floats_;
  mutable std::optional<InvertedIndex> index_;
  mutable std::shared_ptr<HProcessGroup> group_;
  mutable std::unique_ptr<DistanceTable const> own_points_;
  bool is_uniform_ = true;
  bool is_tame_ = true;
};

}  // namespace morva
