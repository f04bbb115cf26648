#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/rows.h"

/// The searches over all pairs of the points of a table, each by the engine that suits the points:
/// bounds in single precision, an index, lengths, or one row after the other.
namespace morva {

/// Two points, i < j.
struct FoundPair {
  std::size_t i;
  std::size_t j;
  double distance;
};
/// Whether a pair comes before another as the farthest: with the greater distance or, of equal
/// ones, first. Before none comes one with a distance above 0.0.
bool is_farther(FoundPair const& pair, std::optional<FoundPair> const& other);

/// The first of the pairs with the greatest distance above 0.0.
///
/// With rows, of a share of the pairs: each pair belongs to one row, by an order of the search's
/// own in which row i has the partners behind it. Of what all rows give, part by part, the one that
/// `is_farther` than the others is that of all pairs.
std::optional<FoundPair> farthest_pair(DistanceTable const& table, Rows rows = every_row);
/// The first of the pairs with the smallest distance below `no_distance`.
std::optional<FoundPair> closest_pair(DistanceTable const& table);
/// Mean over all pairs, summed with i from 0 up and j from i + 1 up; 0.0 with fewer than two.
double average_distance(DistanceTable const& table);

/// Calls `visit(i, near)` for each point i of the rows in order, with the indices, ascending, of
/// those points from i on of which `DistanceTable::within` says 1.
using VisitNeighbours = std::function<void(std::size_t i, std::span<std::uint32_t const> near)>;
void for_each_neighbourhood(DistanceTable const& table, double limit, DistanceTable::Border border,
                            VisitNeighbours const& visit, Rows rows = every_row);
/// `DistanceTable::smallest_distances` of each point of the rows.
std::vector<std::vector<double>> smallest_distances(DistanceTable const& table, std::size_t count,
                                                    Rows rows = every_row);
/// `DistanceTable::greatest_within` of each point of the rows.
std::vector<double> greatest_within(DistanceTable const& table, double limit,
                                    Rows rows = every_row);
/// `DistanceTable::nearest` in `table` of each of the points of the rows, for which `out` has room.
void find_nearest(DistanceTable const& table, DistanceTable const& points, Rows rows,
                  std::span<std::size_t> out);

}  // namespace morva
