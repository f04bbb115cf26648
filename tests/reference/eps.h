#pragma once

#include "reference/measures.h"

namespace reference {

/// One ascending list for each point: its values against all others.
inline Matrix value_lists(Matrix const& points, bool use_distance) {
  Matrix lists;
  for (int i = 0; i < count_of(points); ++i) {
    std::vector<double> list;
    for (int j = 0; j < count_of(points); ++j) {
      if (j != i) {
        list.push_back(use_distance ? distance(row(points, i), row(points, j))
                                    : similarity(row(points, i), row(points, j)));
      }
    }
    sort_values(list);
    lists.push_back(list);
  }
  return lists;
}

/// The values up to and including the `min_points`-th distinct one that is not 0.0.
inline std::vector<double> nearest_distinct(std::vector<double> const& list, int min_points) {
  std::vector<double> taken;
  double last = 0.0;
  int distinct = 0;
  for (double const value : list) {
    if (value != last) {
      last = value;
      ++distinct;
    }
    if (distinct > min_points) {
      break;
    }
    taken.push_back(last);
  }
  return taken;
}

/// The first `min_points` values and those behind them up to a limit; zeros where there are fewer.
inline std::vector<double> nearest_within(std::vector<double> const& list, double average,
                                          int min_points) {
  if (min_points < 0 || static_cast<std::size_t>(min_points) > list.size()) {
    return std::vector<double>(list.size(), 0.0);
  }
  double const limit = average + 0.05999999;
  std::vector<double> taken;
  for (std::size_t p = 0; p < list.size(); ++p) {
    if (list[p] > limit && static_cast<std::size_t>(min_points) <= p) {
      break;
    }
    taken.push_back(list[p]);
  }
  return taken;
}

inline double largest(std::vector<double> const& list) {
  double best = 0.0;
  for (double const value : list) {
    if (value > best) {
      best = value;
    }
  }
  return best;
}

inline double smallest(std::vector<double> const& list) {
  double best = 4503599627370496.0;
  for (double const value : list) {
    if (value < best) {
      best = value;
    }
  }
  return best;
}

/// Mean in list order; NaN of nothing.
inline double average(std::vector<double> const& list) {
  double sum = 0.0;
  for (double const value : list) {
    sum += value;
  }
  return sum / static_cast<double>(list.size());
}

/// The radius estimate over the lists of all points.
inline double estimate_eps(Matrix const& lists, int min_points) {
  if (lists.empty()) {
    return 0.0;
  }
  std::vector<double> first_reach;
  for (std::vector<double> const& list : lists) {
    first_reach.push_back(largest(nearest_distinct(list, min_points)));
  }
  double const avg = average(first_reach);
  std::vector<double> kept;
  for (std::vector<double> const& list : lists) {
    std::vector<double> const near = nearest_within(list, avg, min_points);
    if (smallest(near) <= avg) {
      kept.push_back(largest(near));
    }
  }
  return average(kept);
}

inline double eps_of(Matrix const& points, int min_points, bool use_distance) {
  return estimate_eps(value_lists(points, use_distance), min_points);
}

}  // namespace reference
