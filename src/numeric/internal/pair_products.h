#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/rows.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// The sums of the products of sparse points with each other, for some rows at a time and a tile of
/// points after the other, in memory that stays close to the processor. The few words that many
/// documents share are multiplied side by side, the many that few share one by one, so that a pair
/// costs little more than the products of the rare words that it has in common.
///
/// For bounds only: in which order the products of a pair are summed is not promised.
class PairProducts {
 public:
  /// Points of a tile. Tile t begins at point t * `tile`.
  static constexpr std::size_t tile = 512;

  /// Refers to the points, which are tame and have fewer than 2^32 values.
  explicit PairProducts(std::span<SparsePoint const> points);

  /// Takes some rows, the more the better.
  void take(Rows rows);
  /// Goes to the tile that begins at point `first`.
  void move_to(std::size_t first);
  /// The products of row `rows.begin` + r and the points of the tile; 0.0 behind the last point.
  /// Good until the next call.
  std::span<double const> of_row(std::size_t r);

 private:
  // The points of a tile that have a word, from `begin` up to that of the next run.
  struct Run {
    std::uint32_t column;
    std::uint32_t begin;
  };
  struct Range {
    std::uint32_t begin;
    std::uint32_t end;
  };
  // The values of the rows at some words, which have slots: of row r those from `starts[r]` up to
  // `starts[r + 1]`.
  struct Terms {
    std::vector<std::size_t> starts;
    std::vector<std::size_t> slots;
    std::vector<double> values;

    void clear();
    void add(std::size_t slot, double value);
    std::size_t size() const { return slots.size(); }
  };

  void choose_common();
  void list_tile(std::span<SparsePoint const> points);
  void add_row(SparsePoint const& point);
  void spread(std::size_t slot, Range range);

  std::span<SparsePoint const> points_;
  std::size_t common_count_ = 0;
  // Of each column the slot of its word: of the common ones, from 0 up, and behind them of the rare
  // ones of the rows.
  std::vector<std::uint32_t> slots_;
  // The values by tile and column.
  std::vector<std::size_t> run_starts_;
  std::vector<Run> runs_;
  std::vector<std::uint16_t> places_;
  std::vector<double> values_;

  Terms common_terms_;
  Terms rare_terms_;
  // The rare words of the rows, and of each the points of the tile.
  std::vector<std::uint32_t> rare_;
  std::vector<Range> ranges_;
  // The values of the tile's points at the common words: [slot][point].
  std::vector<double> spread_;
  std::vector<double> sums_;
};

}  // namespace morva
