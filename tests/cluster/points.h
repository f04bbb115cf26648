#pragma once

#include <vector>

#include "numeric/HPointN.h"

namespace test {

using Points = std::vector<HPointN>;
using Members = std::vector<int>;
using Clusters = std::vector<Members>;

inline HPointN point(std::vector<double> const& coordinates) {
  return {coordinates};
}

/// Points of one dimension.
inline Points line(std::vector<double> const& values) {
  Points points;
  for (double const value : values) {
    points.push_back(point({value}));
  }
  return points;
}

/// The coordinates of points of one dimension.
inline std::vector<double> values_of(Points const& points) {
  std::vector<double> values;
  for (HPointN const& each : points) {
    values.push_back(each.at(0));
  }
  return values;
}

}  // namespace test
