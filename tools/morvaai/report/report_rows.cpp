#include "report/report_rows.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tool {

ReportRow row_of(std::vector<double> const& weights) {
  ReportRow row;
  row.n = static_cast<long long>(weights.size());
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (weights[i] != 0.0 && std::isfinite(weights[i])) {
      row.indices.push_back(static_cast<std::uint32_t>(i));
      row.values.push_back(weights[i]);
    }
  }
  return row;
}

std::vector<ReportRow> rows_of(HSparsePoints const& points) {
  std::vector<ReportRow> rows;
  rows.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    rows.push_back(row_of(points.at(static_cast<int>(i)).vt_data));
  }
  return rows;
}

double square_of(ReportRow const& row) {
  double sum = 0.0;
  for (double const value : row.values) {
    sum += value * value;
  }
  return sum;
}

double distance_of(ReportRow const& first, ReportRow const& second) {
  double sum = 0.0;
  std::size_t a = 0;
  std::size_t b = 0;
  while (a < first.indices.size() || b < second.indices.size()) {
    bool const has_first = b == second.indices.size() ||
                           (a < first.indices.size() && first.indices[a] <= second.indices[b]);
    bool const has_second = a == first.indices.size() ||
                            (b < second.indices.size() && second.indices[b] <= first.indices[a]);
    double const difference =
        (has_first ? first.values[a++] : 0.0) - (has_second ? second.values[b++] : 0.0);
    sum += difference * difference;
  }
  return std::sqrt(sum);
}

}  // namespace tool
