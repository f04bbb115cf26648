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
  /// As `InvertedSearch::neighbours`, with the same limits to what may be asked.
  std::span<std::uint32_t const> neighbours(std::size_t i, double limit,
                                            DistanceTable::Border border);
  std::vector<std::vector<double>> smallest_distances(Rows rows, std::size_t count);
  std::vector<double> greatest_within(Rows rows, double limit);
  /// `points`, of which the rows are, has the bounds `floats` in the scale of this table.
  void nearest(DistanceTable const& points, FloatLanes const& floats, Rows rows,
               std::span<std::size_t> out);

 private:
  enum class Part { all, behind };
  template <typename Take>
  void for_each_row(Rows rows, Part part, Take const& take);
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  void list_open(std::span<char const> states, std::size_t first);

  DistanceTable const& table_;
  FloatLanes const& floats_;
  FloatLanes::Bounds bounds_;
  // The rows that `neighbours` has bounds for.
  std::size_t block_ = none;
  std::vector<std::uint32_t> near_;
  // What is left open of a row.
  std::vector<char> states_;
  std::vector<std::size_t> open_;
  OpenDistances open_distances_;
};

}  // namespace morva
