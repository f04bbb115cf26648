#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "dna/internal/band_plan.h"

namespace morva {

/// Rows of bits, as `pack_digits` writes them, of which for each those are found that differ from
/// it in few bits: by bands (`BandPlan`), or by comparing it with all.
///
/// However the bits are chosen, finding what is near a row takes at most about three times as long
/// as comparing it with all: the plan has no more lookups than would cost that, and where more rows
/// are looked up than that, it is dropped for this row. The index takes at most 20 bytes for each
/// row and band.
class NearRows {
 public:
  struct Near {
    std::size_t row;
    std::size_t differing;
  };

  /// So many words to a row. Without a plan the one that should cost least; rows of other than two
  /// words have none but to be compared with all.
  NearRows(std::vector<std::uint64_t> rows, std::size_t row_size, std::size_t most_differing,
           std::optional<BandPlan> const& plan = std::nullopt);

  std::size_t size() const { return size_; }

  /// Replaces `found` by the rows from `first` on, in ascending order, that differ from `row` in at
  /// most that many bits; `row` itself among them where it is one of these.
  void find(std::size_t row, std::size_t first, std::vector<Near>& found) const;

 private:
  // The rows of each key, in ascending order.
  struct Band {
    std::size_t first_bit;
    // Of `differences_`, those within the radius.
    std::size_t lookups;
    std::vector<std::uint32_t> begins;
    std::vector<std::uint32_t> rows;
  };

  std::span<std::uint64_t const> words_of(std::size_t row) const {
    return std::span(rows_).subspan(row * row_size_, row_size_);
  }
  std::uint32_t key(std::size_t row, std::size_t first_bit) const;
  void index();
  void index(Band& band) const;
  void scan(std::size_t row, std::size_t first, std::vector<Near>& found) const;
  bool look_up(std::size_t row, std::size_t first, std::vector<Near>& found) const;

  std::vector<std::uint64_t> rows_;
  std::size_t row_size_;
  std::size_t size_;
  std::size_t most_;
  BandPlan plan_;
  // What a key may differ in, fewer bits before more.
  std::vector<std::uint32_t> differences_;
  std::vector<Band> bands_;
  // Of all bands, for one row, in comparisons.
  double lookup_cost_ = 0.0;
};

}  // namespace morva
