#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

/// The clustering side in its plainest form: every rule as a loop over plain vectors, nothing
/// remembered and nothing skipped. The library is compared with it bit for bit and measured beside
/// it.
namespace reference {

using Point = std::vector<double>;
/// One row for each point; rows may differ in length.
using Matrix = std::vector<Point>;
using Members = std::vector<int>;
using Clusters = std::vector<Members>;

/// Stands for no distance, and for one larger than any.
inline constexpr double no_distance = 9223372036854775808.0;

inline int count_of(Matrix const& points) {
  return static_cast<int>(points.size());
}

inline Point const& row(Matrix const& points, int i) {
  return points[static_cast<std::size_t>(i)];
}

inline bool is_row(Matrix const& points, int i) {
  return i >= 0 && i < count_of(points);
}

/// 0, 1, ... up to `count` - 1.
inline Members all_indices(int count) {
  Members indices;
  for (int i = 0; i < count; ++i) {
    indices.push_back(i);
  }
  return indices;
}

/// Erases the first element equal to `value`.
inline void remove(int value, Members& list) {
  auto const found = std::find(list.begin(), list.end(), value);
  if (found != list.end()) {
    list.erase(found);
  }
}

/// Ascending, -0.0 before 0.0, NaN last.
inline void sort_values(std::vector<double>& values) {
  std::sort(values.begin(), values.end(), [](double a, double b) {
    if (std::isnan(a) || std::isnan(b)) {
      return !std::isnan(a) && std::isnan(b);
    }
    return a < b || (a == b && std::signbit(a) && !std::signbit(b));
  });
}

/// Euclidean, summed in index order.
inline double distance(Point const& a, Point const& b) {
  if (a.size() != b.size()) {
    return no_distance;
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    sum += (a[i] - b[i]) * (a[i] - b[i]);
  }
  return std::sqrt(sum);
}

/// Cosine; none for points of one dimension, NaN for a zero point.
inline double similarity(Point const& a, Point const& b) {
  if (a.size() != b.size() || a.size() <= 1) {
    return 0.0;
  }
  double dot = 0.0;
  double squares_a = 0.0;
  double squares_b = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    dot += a[i] * b[i];
    squares_a += a[i] * a[i];
    squares_b += b[i] * b[i];
  }
  return dot / (std::sqrt(squares_a) * std::sqrt(squares_b));
}

/// Mean over all pairs, in the order of the pairs.
inline double mean_distance(Matrix const& points) {
  double sum = 0.0;
  int pairs = 0;
  for (int i = 0; i < count_of(points); ++i) {
    for (int j = i + 1; j < count_of(points); ++j) {
      sum += distance(row(points, i), row(points, j));
      ++pairs;
    }
  }
  return pairs == 0 ? 0.0 : sum / pairs;
}

/// A pair of points; `i` and `j` keep what they were made with where no pair was found.
struct Pair {
  double distance;
  int i = -1;
  int j = -1;
};

/// The first of the closest pairs.
inline Pair closest_pair(Matrix const& points) {
  Pair best{no_distance};
  for (int i = 0; i < count_of(points); ++i) {
    for (int j = i + 1; j < count_of(points); ++j) {
      double const d = distance(row(points, i), row(points, j));
      if (d < best.distance) {
        best = {d, i, j};
      }
    }
  }
  return best;
}

/// The first of the farthest pairs.
inline Pair farthest_pair(Matrix const& points) {
  Pair best{0.0};
  for (int i = 0; i < count_of(points); ++i) {
    for (int j = i + 1; j < count_of(points); ++j) {
      double const d = distance(row(points, i), row(points, j));
      if (d > best.distance) {
        best = {d, i, j};
      }
    }
  }
  return best;
}

/// From a point to all points.
inline double distance_sum(Point const& point, Matrix const& points) {
  double sum = 0.0;
  for (Point const& other : points) {
    sum += distance(other, point);
  }
  return sum;
}

/// From a point of the list to the members.
inline double distance_sum(Matrix const& points, int index, Members const& members) {
  if (!is_row(points, index)) {
    return 0.0;
  }
  double sum = 0.0;
  for (int const member : members) {
    if (is_row(points, member)) {
      sum += distance(row(points, index), row(points, member));
    }
  }
  return sum;
}

inline Point zero_point(long long n) {
  return Point(static_cast<std::size_t>(std::max(n, 0LL)), 0.0);
}

/// Adds a point of the same length; another changes nothing.
inline void add(Point const& term, Point& sum) {
  if (term.size() != sum.size()) {
    return;
  }
  for (std::size_t i = 0; i < sum.size(); ++i) {
    sum[i] += term[i];
  }
}

/// Mean of the members that exist, in the dimension of the first point of the list.
inline Point center(Matrix const& points, Members const& members) {
  if (points.empty() || members.empty()) {
    return {};
  }
  Point sum = zero_point(static_cast<long long>(points[0].size()));
  int count = 0;
  for (int const member : members) {
    if (is_row(points, member)) {
      ++count;
      add(row(points, member), sum);
    }
  }
  if (count != 0) {
    for (double& x : sum) {
      x /= count;
    }
  }
  return sum;
}

inline Point center(Matrix const& points) {
  return center(points, all_indices(count_of(points)));
}

/// Median by the upper-neighbour rule; of two values the upper one.
inline double median_of(std::vector<double> values) {
  sort_values(values);
  std::size_t const middle = values.size() / 2;
  if (values.size() % 2 == 1 || values.size() == 2) {
    return values[middle];
  }
  return 0.5 * (values[middle] + values[middle + 1]);
}

/// Coordinate by coordinate over the members that exist; a missing coordinate counts as 0.0.
inline Point median(Matrix const& points, Members const& members) {
  Matrix rows;
  for (int const member : members) {
    if (is_row(points, member)) {
      rows.push_back(row(points, member));
    }
  }
  if (rows.empty()) {
    return {};
  }
  Point medians;
  for (std::size_t d = 0; d < points[0].size(); ++d) {
    std::vector<double> values;
    for (Point const& each : rows) {
      values.push_back(d < each.size() ? each[d] : 0.0);
    }
    medians.push_back(median_of(values));
  }
  return medians;
}

/// Largest distance of a member from the members' mean.
inline double max_radius(Matrix const& points, Members const& members) {
  Point const middle = center(points, members);
  double radius = 0.0;
  for (int const member : members) {
    if (is_row(points, member)) {
      double const d = distance(middle, row(points, member));
      if (d > radius) {
        radius = d;
      }
    }
  }
  return radius;
}

/// The last of the points nearest to `point`, none of them beyond `no_distance`; else 0.
inline int nearest_index(Matrix const& points, Point const& point) {
  double best = no_distance;
  int index = 0;
  for (int i = 0; i < count_of(points); ++i) {
    double const d = distance(point, row(points, i));
    if (d <= best) {
      best = d;
      index = i;
    }
  }
  return index;
}

}  // namespace reference
