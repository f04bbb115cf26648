#pragma once

#include <cstddef>
#include <cstdint>
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
/// made of.
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
  struct Found {
    std::size_t index;
    double distance;
  };

  /// In the given form, else in that which suits the share of zeros. Throws where there are more
  /// values than `require_countable` lets pass.
  explicit DistanceTable(std::vector<SparsePoint> points, std::optional<Form> form = {});

  std::size_t size() const { return points_.size(); }
  Form form() const { return form_; }
  /// Whether the searches that bound distances by the few coordinates that are not zero are for
  /// these points: sparse ones, all tame and of one dimension.
  bool has_sparse_bounds() const { return form_ == Form::sparse && is_tame_ && is_uniform_; }
  std::vector<SparsePoint> const& points() const { return points_; }
  /// Frees what the searches made, until one needs it again.
  void release_columns() const;
  /// Takes the points out; the table is then good for nothing else.
  std::vector<SparsePoint> take_points() { return std::move(points_); }
  SparsePoint const& operator[](std::size_t i) const { return points_[i]; }

  /// The processes that hold the same points and share the work on them; null where this one works
  /// alone.
  std::shared_ptr<HProcessGroup> const& group() const { return group_; }
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

  /// For the points from `first` on: 1 where the distance from `x` is below the limit, or with the
  /// border inside not above it; else 0.
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
  /// Mean over all pairs, summed with i from 0 up and j from i + 1 up; 0.0 with fewer than two.
  double average_distance() const;

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

/// Of all pairs i < j, the first of those with the greatest distance above 0.0, and with the
/// smallest one below `no_distance`.
struct FoundPair {
  std::size_t i;
  std::size_t j;
  double distance;
};
/// With rows, of a share of the pairs: each pair belongs to one row, by an order of the search's
/// own in which row i has the partners behind it. The greatest of what all rows give, part by part,
/// of equal ones the first pair, is that of all pairs.
std::optional<FoundPair> farthest_pair(DistanceTable const& table, Rows rows = every_row);
std::optional<FoundPair> closest_pair(DistanceTable const& table);

/// Calls `visit(i, near)` for each point i of the rows in order, with the indices, ascending, of
/// those points from i on of which `DistanceTable::within` says 1.
using VisitNeighbours = std::function<void(std::size_t i, std::span<std::uint32_t const> near)>;
void for_each_neighbourhood(DistanceTable const& table, double limit, DistanceTable::Border border,
                            VisitNeighbours const& visit, Rows rows = every_row);
/// `DistanceTable::smallest_distances` of each point of the rows.
std::vector<std::vector<double>> smallest_distances(DistanceTable const& table, std::size_t count,
                                                    Rows rows = every_row);
/// Of each point of the rows, the greatest distance to another that is not above the limit; 0.0
/// where there is none.
std::vector<double> greatest_within(DistanceTable const& table, double limit,
                                    Rows rows = every_row);
/// `DistanceTable::nearest` in `table` of each of the points of the rows, for which `out` has room.
void find_nearest(DistanceTable const& table, DistanceTable const& points, Rows rows,
                  std::span<std::size_t> out);

}  // namespace morva
