#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "numeric/HPointN.h"

#include "reference/measures.h"

namespace reference {

inline std::vector<HPointN> to_points(Matrix const& rows) {
  std::vector<HPointN> points;
  points.reserve(rows.size());
  for (Point const& each : rows) {
    points.emplace_back(each);
  }
  return points;
}

inline Matrix to_matrix(std::vector<HPointN> const& points) {
  Matrix rows;
  rows.reserve(points.size());
  for (HPointN const& each : points) {
    rows.push_back(each.vt_data);
  }
  return rows;
}

/// The same bits; any NaN equals any other.
inline bool is_same(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) {
    return std::isnan(a) && std::isnan(b);
  }
  return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool is_same(Point const& a, Point const& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!is_same(a[i], b[i])) {
      return false;
    }
  }
  return true;
}

inline bool is_same(Matrix const& a, Matrix const& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!is_same(a[i], b[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace reference
