#include "classes/distance_rows.h"

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

// Below this part of both squared lengths, their difference from the product has lost digits.
constexpr double nearness = 1e-4;
// A cosine of 1 comes out less by no more than this.
constexpr double rounding = 1e-12;

}  // namespace

DistanceRows::DistanceRows(HSparsePoints const& points)
    : points_(points.size()), squared_lengths_(points.size()) {
  for (std::size_t i = 0; i < points_.size(); ++i) {
    HPointN const point = points.at(static_cast<int>(i));
    columns_.resize(std::max(columns_.size(), point.vt_data.size()));
    for (std::size_t k = 0; k < point.vt_data.size(); ++k) {
      double const value = point.vt_data[k];
      if (value == 0.0) {
        continue;
      }
      points_[i].push_back({static_cast<std::uint32_t>(k), value});
      columns_[k].push_back({static_cast<std::uint32_t>(i), value});
      squared_lengths_[i] += value * value;
    }
  }
}

double DistanceRows::squared_distance(Coordinates const& a, Coordinates const& b) {
  double sum = 0.0;
  auto at_a = a.begin();
  auto at_b = b.begin();
  while (at_a != a.end() || at_b != b.end()) {
    bool const takes_a = at_b == b.end() || (at_a != a.end() && at_a->index <= at_b->index);
    bool const takes_b = at_a == a.end() || (at_b != b.end() && at_b->index <= at_a->index);
    double const difference = (takes_a ? at_a->value : 0.0) - (takes_b ? at_b->value : 0.0);
    sum += difference * difference;
    at_a += takes_a ? 1 : 0;
    at_b += takes_b ? 1 : 0;
  }
  return sum;
}

void DistanceRows::multiply(std::size_t i, std::vector<double>& products) const {
  products.assign(points_.size(), 0.0);
  for (Coordinate const& own : points_[i]) {
    for (Coordinate const& other : columns_[own.index]) {
      products[other.index] += own.value * other.value;
    }
  }
}

void DistanceRows::measure(std::size_t i, std::vector<double>& row) const {
  multiply(i, row);
  for (std::size_t j = 0; j < row.size(); ++j) {
    double const lengths = squared_lengths_[i] + squared_lengths_[j];
    double const squared = lengths - 2.0 * row[j];
    row[j] = std::sqrt(squared > nearness * lengths ? squared
                                                    : squared_distance(points_[i], points_[j]));
  }
}

void DistanceRows::measure_directions(std::size_t i, std::vector<double>& row) const {
  multiply(i, row);
  for (std::size_t j = 0; j < row.size(); ++j) {
    double const lengths = std::sqrt(squared_lengths_[i]) * std::sqrt(squared_lengths_[j]);
    double const apart = lengths > 0.0 ? 1.0 - row[j] / lengths : 1.0;
    row[j] = j == i || apart < rounding ? 0.0 : apart;
  }
}

}  // namespace tool
