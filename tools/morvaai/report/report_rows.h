#pragma once

#include <vector>

#include "morvaai.h"

namespace tool {

/// Weights of words as a report looks at them: only those that are not zero, with their places in
/// the vocabulary. Distances of rows are those of the library but for the last bits.
using ReportRow = HSparsePoints::Row;

/// The weights that are finite numbers other than zero.
ReportRow row_of(std::vector<double> const& weights);

/// The points as rows, in their order. Linear in the number of all their coordinates.
std::vector<ReportRow> rows_of(HSparsePoints const& points);

/// Sum of the squares.
double square_of(ReportRow const& row);

/// Euclidean, over the words of both.
double distance_of(ReportRow const& first, ReportRow const& second);

}  // namespace tool
