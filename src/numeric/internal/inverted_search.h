#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/band_search.h"
#include "numeric/internal/index_set.h"
#include "numeric/internal/inverted_index.h"
#include "numeric/internal/open_distances.h"
#include "numeric/internal/rows.h"

namespace morva {

/// The searches over all pairs of points of which most coordinates are zero, by the words that the
/// points share: two are within a limit only where the sum of their products reaches
/// (|x|^2 + |y|^2 - limit^2) / 2. Where lengths alone tell on which side a whole band of points is,
/// none of it is looked at; else `BandSearch` rules out most of it, and what its bounds leave open
/// is measured exactly, so that all results are those of measuring pair by pair, bit for bit.
///
/// After Bayardo, Ma, Srikant, "Scaling up all pairs similarity search" (WWW 2007), and Anastasiu,
/// Karypis, "L2AP: fast cosine similarity search with prefix L2 norm bounds" (ICDE 2014). Where
/// most pairs are near the limit all of them are bounded, as `DistanceTable` does.
class InvertedSearch {
 public:
  using Border = DistanceTable::Border;

  /// The index is that of the points of the table, which has sparse bounds.
  InvertedSearch(DistanceTable const& table, InvertedIndex const& index);

  /// The indices j >= i, ascending, of the points within the limit of point i; i itself is among
  /// them where 0.0 is. For a search that is asked for nothing else, and for no i below that of the
  /// call before; good until the next call.
  std::span<std::uint32_t const> neighbours(std::size_t i, double limit, Border border);
  /// The `count` smallest distances of each row to the other points, ascending.
  std::vector<std::vector<double>> smallest_distances(Rows rows, std::size_t count);
  /// Of each row, the greatest distance to another point that is not above the limit; 0.0 where
  /// there is none.
  std::vector<double> greatest_within(Rows rows, double limit);
  /// Of the pairs i < j with i among the rows, the first of those with the smallest distance.
  std::optional<FoundPair> closest_pair(Rows rows);

 private:
  using Near = BandSearch::Near;

  /// Bounds on the square of a distance that is known, in units of the index.
  struct Square {
    double low;
    double high;
  };
  Square square_of(double distance) const;

  void mark_band(std::size_t band);

  double reach_of_shortest(std::size_t count) const;
  void keep_nearest(std::span<Near const> found, std::size_t i, std::size_t count);
  std::vector<double> smallest_of_row(std::size_t i, std::size_t count, double shortest);
  void keep_farthest(std::span<Near const> found, std::size_t i, Square const& limit);
  double greatest_of_row(std::size_t i, double limit);
  void open_candidates(double from, double to);

  DistanceTable const& table_;
  InvertedIndex const& index_;
  BandSearch bands_;

  // What belongs to the result of a row, and a list of it.
  WideIndexSet marks_;
  std::vector<std::uint32_t> marked_;
  // What may belong to the result of a row, and a bound on the squares of what does.
  std::vector<Near> candidates_;
  double reach_ = 0.0;
  std::vector<double> nearest_;
  std::vector<std::uint32_t> open_;
  OpenDistances open_distances_;
};

}  // namespace morva
