#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/HString.h"
#include "host/export.h"
#include "numeric/HPointN.h"

namespace morva {
class DistanceTable;
}
class HProcessGroup;

/// A list of points of which only the coordinates that are not zero are kept, for documents, which
/// lack most words of a vocabulary. The counterpart of a `std::vector<HPointN>` with the measures
/// of `HClusterCenter` and `HClusterDistance`: every answer is theirs to the last bit.
///
/// A value that does not change: copies share what they hold. Measuring notes there what it needs
/// again, so that a list and its copies are for one thread at a time. Takes 12 bytes for each
/// coordinate that is kept, and while it is measured up to some 50 more for each, and some 300 for
/// each point. Keeps fewer than 2^32 coordinates in all: the constructors throw `std::length_error`
/// where there are more. Nothing is logged.
class MORVA_EXPORT HSparsePoints {
 public:
  /// A point as its coordinates that are not zero: at `indices[k]` the value `values[k]`.
  struct MORVA_EXPORT Row {
    /// Label of the point.
    HString str_label;
    /// Number of dimensions, below 2^32.
    long long n = 0;
    /// Ascending, each below `n`. Measuring takes up to some 24 bytes for each index up to the
    /// greatest of all points: number only what is in use.
    std::vector<std::uint32_t> indices;
    /// None of them 0; beside each its place in `indices`.
    std::vector<double> values;
  };

  /// No points.
  HSparsePoints();
  /// Copies of the points, so that each has as many dimensions as it has coordinates.
  explicit HSparsePoints(std::vector<HPointN> const& points);
  /// An index that is not above the one before it or not below `n`, and one without a value, is
  /// left out together with its value.
  explicit HSparsePoints(std::vector<Row> rows);
  /// Shares the points with `other`.
  HSparsePoints(HSparsePoints const& other);
  /// Leaves `other` without points.
  HSparsePoints(HSparsePoints&& other) noexcept;
  /// Shares the points with `other`.
  HSparsePoints& operator=(HSparsePoints const& other);
  /// Leaves `other` without points.
  HSparsePoints& operator=(HSparsePoints&& other) noexcept;
  ~HSparsePoints();

  /// Number of the points.
  std::size_t size() const;
  /// Whether there are none.
  bool empty() const;
  /// Point i with all its coordinates; outside the list a point without any.
  HPointN at(int const& i) const;

  /// As `HClusterCenter::get_center_point`, in time proportional to the members' coordinates that
  /// are not zero, and to the dimension of the result.
  HPointN get_center_point(std::vector<int> const& members) const;
  /// As `HClusterDistance::get_max_radius`.
  double get_max_radius(std::vector<int> const& members) const;
  /// As `HClusterDistance::get_avg_distance`.
  double get_avg_distance() const;

  /// From here on the processes of the group divide among them what `HSparseClusterMgr` and
  /// `get_avg_distance` measure over these points and over lists that share them; the results, the
  /// same bits as without a group, are there in each. All processes of the group have to call this
  /// with the same points, and then run the same calls in the same order. Takes a copy of the share
  /// of the points beside them, and sends as much as results are large, not as points are. What a
  /// process brings that cannot be a result ends the call with `std::runtime_error`.
  ///
  /// Each process does the whole of what is not divided: the neighbours of DBSCAN by similarity,
  /// the medians of points of few zeros, the repair of empty clusters, and means that take no
  /// longer to make than to send.
  ///
  /// False, with nothing changed, in all processes where the points, by a digest of them, are not
  /// the same in all. Null ends it in this process.
  bool share_work(std::shared_ptr<HProcessGroup> const& group);

 private:
  friend class HSparseClusterMgr;
  friend class HSparseResultMgr;

  struct Content;
  std::shared_ptr<morva::DistanceTable const> table() const;

  // Null for no points.
  std::shared_ptr<Content const> content_;
};
