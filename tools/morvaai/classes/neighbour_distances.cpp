#include "classes/neighbour_distances.h"

#include <algorithm>
#include <cstddef>

#include "classes/distance_rows.h"

namespace tool {

namespace {

constexpr std::size_t most_pairs = 20'000UL * 20'000UL;

}  // namespace

std::vector<double> neighbour_distances(HSparsePoints const& points, int count) {
  std::size_t const size = points.size();
  if (count < 1 || static_cast<std::size_t>(count) >= size) {
    return {};
  }
  DistanceRows const rows(points);
  std::size_t const step = (size * size + most_pairs - 1) / most_pairs;
  std::vector<double> distances;
  std::vector<double> row;
  for (std::size_t i = 0; i < size; i += step) {
    rows.measure(i, row);
    row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
    auto const wanted = row.begin() + (count - 1);
    std::nth_element(row.begin(), wanted, row.end());
    distances.push_back(*wanted);
  }
  std::sort(distances.begin(), distances.end());
  return distances;
}

}  // namespace tool
