#include "numeric/internal/radius.h"

#include <algorithm>
#include <vector>

#include "numeric/internal/spread_point.h"

namespace morva {

namespace {

bool can_bound(SparsePoint const& center, std::span<SparsePoint const* const> points) {
  return center.is_tame && std::all_of(points.begin(), points.end(), [&](SparsePoint const* point) {
           return point->is_tame && point->n == center.n;
         });
}

// Of the points those that are not certainly nearer than another.
std::vector<SparsePoint const*> farthest(SparsePoint const& center,
                                         std::span<SparsePoint const* const> points) {
  std::size_t columns = column_count({&center, 1});
  for (SparsePoint const* point : points) {
    columns = std::max(columns, column_count({point, 1}));
  }
  SpreadPoint spread(columns);
  spread.become(center);
  SquareBounds::Part const part(center);
  std::vector<double> highs;
  double reach = 0.0;
  for (SparsePoint const* point : points) {
    SquareBounds const square(part, *point, spread.dot(*point));
    highs.push_back(square.high);
    reach = std::max(reach, square.low);
  }
  std::vector<SparsePoint const*> result;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (highs[i] >= reach) {
      result.push_back(points[i]);
    }
  }
  return result;
}

}  // namespace

double radius(SparsePoint const& center, std::span<SparsePoint const* const> points) {
  double greatest = 0.0;
  auto const measure = [&](std::span<SparsePoint const* const> some) {
    for (SparsePoint const* point : some) {
      double const measured = distance(center, *point);
      greatest = measured > greatest ? measured : greatest;
    }
  };
  measure(can_bound(center, points) ? farthest(center, points)
                                    : std::vector(points.begin(), points.end()));
  return greatest;
}

}  // namespace morva
