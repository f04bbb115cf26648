#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/ordered_sum.h"
#include "numeric/internal/pair_products.h"
#include "numeric/internal/rows.h"

namespace morva {

/// The sum of the distances of all pairs of a table, added with i from 0 up and j from i + 1 up,
/// each addition rounded.
///
/// Within a binade, the sum takes of each distance only the nearest multiple of the unit of its own
/// last bit. So the distances of a row are rounded and added side by side, or by another process.
/// And as that unit is far larger than the last bit of a distance, |x|^2 + |y|^2 - 2xy tells the
/// multiple; a distance is measured only where the bounds of that square are on both sides of a
/// border.
class DistanceSum {
 public:
  /// Refers to the table.
  explicit DistanceSum(DistanceTable const& table);

  /// What each of some rows adds, to a sum in the binade that a sample of the pairs predicts for
  /// it.
  std::vector<RowSum> row_sums(Rows rows);
  /// The sum. `known` has nothing, or what `row_sums` says of every row; what it predicted wrongly
  /// is computed again.
  double total(std::span<RowSum const> known = {});

 private:
  struct Part {
    RowSum sum;
    std::size_t open = 0;
  };
  // Points from `first` on, with the most roundings of one of them.
  struct Tile {
    std::size_t first;
    std::size_t count;
    double roundings;
  };

  Tile tile_at(std::size_t first) const;
  Part bound_part(std::size_t i, Tile const& tile, std::span<double const> products, int binade);
  void measure_open(std::size_t i, std::size_t first, SumRounding const& rounding, Part& part);
  bool bound_rows(Rows rows, std::span<RowSum> sums);
  void add_by_tiles(std::size_t i, OrderedSum& sum);
  std::size_t add_rows(Rows rows, OrderedSum& sum);
  std::vector<double> predicted_sums() const;

  DistanceTable const& table_;
  // Where bounds hold.
  std::optional<PairProducts> products_;
  std::vector<double> square_sums_;
  std::vector<double> roundings_;
  // Of the points of a tile 1.0 where the multiple is not certain, else 0.0.
  std::vector<double> open_;
};

}  // namespace morva
