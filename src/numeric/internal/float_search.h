#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/float_lanes.h"
#include "numeric/internal/open_distances.h"
#include "numeric/internal/rows.h"

namespace morva {

/// The searches of a `DistanceTable` over all pairs of its points, with bounds for all and exact
/// distances only where the bounds leave something open: those of few pairs as a rule, of all where
/// distances tie.
class FloatSearch {
 public:
  FloatSearch(DistanceTable const& table, FloatLanes const& floats);

  /// Only of pairs that are far enough from a common point, so that together they reach the
  /// distance of a pair that is known: where few points lie far out, almost linear. The rows are
  /// places in the order of their distances from that point.
  std::optional<FoundPair> farthest_pair(Rows rows);
  std::optional<FoundPair> closest_pair();
  /// As `DistanceTable::within` from point i. Rows that are near each other are best asked for one
  /// after the other, and with a `first` that does not fall.
  void within(std::size_t i, std::size_t first, double limit, DistanceTable::Border border,
              std::span<char> out);
  void neighbours(Rows rows, double limit, DistanceTable::Border border,
                  VisitNeighbours const& visit);
  std::vector<std::vector<double>> smallest_distances(Rows rows, std::size_t count);
  std::vector<double> greatest_within(Rows rows, double limit);
  /// `points`, of which the rows are, has the bounds `floats` in the scale of this table.
  void nearest(DistanceTable const& points, FloatLanes const& floats, Rows rows,
               std::span<std::size_t> out);

 private:
  enum class Part { all, from_itself, behind };
  template <typename Take>
  void for_each_row(Rows rows, Part part, Take const& take);
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  void decide(std::size_t i, std::size_t first, double limit, DistanceTable::Border border,
              std::span<char> states);
  void list_open(std::span<char const> states, std::size_t first);

  DistanceTable const& table_;
  FloatLanes const& floats_;
  FloatLanes::Bounds bounds_;
  // The rows that `within` has bounds for, and from where on.
  std::size_t block_ = none;
  std::size_t block_first_ = 0;
  // What is left open of a row.
  std::vector<char> states_;
  std::vector<std::size_t> open_;
  OpenDistances open_distances_;
};

}  // namespace morva
