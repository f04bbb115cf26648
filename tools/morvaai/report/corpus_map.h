#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "report/report_rows.h"

namespace tool {

/// A map of weighted rows in two dimensions: those in which the rows differ most, their first two
/// principal components. What is mapped lies nowhere farther apart than it is, mostly nearer.
///
/// The components are found by simultaneous iteration (H. Rutishauser, "Simultaneous iteration
/// method for symmetric matrices", 1970) on the products of the centered rows, from fixed vectors
/// and in a fixed number of rounds; the last step solves the small problem by cyclic Jacobi
/// rotations. Only operations that round alike everywhere: the same rows give the same bits on all
/// machines. Takes the memory of three dense rows, and time in proportion to the weights.
class CorpusMap {
 public:
  using Place = std::array<double, 2>;

  /// The rows have `dimensions` dimensions.
  CorpusMap(std::vector<ReportRow> const& rows, std::size_t dimensions);

  /// Where a row lies, one of the map or another. The middle of the mapped rows lies at the origin;
  /// of the rows that the map was made from, the one farthest from the middle along an axis lies on
  /// its positive side, the first of several.
  Place place_of(ReportRow const& row) const;

  /// What part of the squared distances to the middle each axis shows, 0 to 1; 0 for an axis
  /// without extent.
  std::array<double, 2> const& shares() const { return shares_; }

 private:
  std::array<std::vector<double>, 2> axes_;
  Place middle_{};
  std::array<double, 2> shares_{};
};

}  // namespace tool
