#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/HString.h"

namespace morva {

/// The DNAs of one length, of which those with the same bits are one row. Rows are numbered in the
/// order of the last DNA that each stands for.
class DnaShelf {
 public:
  /// The DNAs at these indices, in ascending order, all of so many digits, at least one.
  DnaShelf(std::vector<HString> const& dnas, std::vector<std::size_t> indices, std::size_t digits);

  std::size_t digits() const { return digits_; }
  std::size_t row_size() const;
  /// Row by row.
  std::vector<std::uint64_t> const& words() const { return words_; }
  std::size_t row_count() const { return begins_.size() - 1; }
  /// The DNAs that a row stands for, in ascending order.
  std::span<std::size_t const> dnas_of(std::size_t row) const {
    return std::span(indices_).subspan(begins_[row], begins_[row + 1] - begins_[row]);
  }

 private:
  std::size_t digits_;
  std::vector<std::uint64_t> words_;
  // Row by row.
  std::vector<std::size_t> indices_;
  std::vector<std::size_t> begins_;
};

/// The shelves of DNAs by their lengths, without those that are empty.
std::vector<DnaShelf> dna_shelves(std::vector<HString> const& dnas);

}  // namespace morva
