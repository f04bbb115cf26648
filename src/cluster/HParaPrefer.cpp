#include "cluster/HParaPrefer.h"

#include <algorithm>
#include <cstddef>

#include "numeric/internal/center_finder.h"
#include "numeric/internal/distance_table.h"

namespace {

constexpr double margin = 0.05999999;
constexpr double greatest_nearest = 4503599627370496.0;

using Lists = std::vector<std::vector<double>>;

// The values of point i against all others, ascending.
std::vector<double> values_of(morva::DistanceTable const& points, std::size_t i,
                              bool use_distance) {
  std::vector<double> values(points.size());
  if (use_distance) {
    points.distances(points[i], 0, values);
  } else {
    points.similarities(points[i], 0, values);
  }
  values.erase(values.begin() + static_cast<std::ptrdiff_t>(i));
  morva::sort_ascending(values);
  return values;
}

// The mean reach of the points whose nearest neighbour lies within `limit`.
double mean_reach(std::vector<double> const& reaches, std::vector<double> const& nearest,
                  double limit) {
  std::vector<double> kept;
  for (std::size_t i = 0; i < nearest.size(); ++i) {
    if (nearest[i] <= limit) {
      kept.push_back(reaches[i]);
    }
  }
  return HParaPrefer::get_vt_avg(kept);
}

// The estimate over lists that `list(i)` makes, each twice, so that none need be kept.
template <typename MakeList>
double estimate(std::size_t count, int min_points, MakeList const& list) {
  if (count == 0) {
    return 0.0;
  }
  std::vector<double> reaches;
  std::vector<double> nearest;
  std::vector<double> part;
  for (std::size_t i = 0; i < count; ++i) {
    part.clear();
    HParaPrefer::get_nearest_minpts(list(i), min_points, part);
    reaches.push_back(HParaPrefer::get_max_nearest(part));
  }
  double const average = HParaPrefer::get_vt_avg(reaches);
  reaches.clear();
  for (std::size_t i = 0; i < count; ++i) {
    HParaPrefer::get_nearest_value(list(i), average, min_points, part);
    reaches.push_back(HParaPrefer::get_max_nearest(part));
    nearest.push_back(HParaPrefer::get_min_nearest(part));
  }
  return mean_reach(reaches, nearest, average);
}

}  // namespace

HParaPrefer::HParaPrefer() = default;
HParaPrefer::~HParaPrefer() = default;

double HParaPrefer::get_eps(std::vector<HPointN> const& points, int const& min_points,
                            bool use_distance) {
  morva::DistanceTable const table(morva::compress(points));
  return estimate(table.size(), min_points,
                  [&](std::size_t i) { return values_of(table, i, use_distance); });
}

void HParaPrefer::get_vt_all(std::vector<HPointN> const& points, Lists& lists, bool use_distance) {
  morva::DistanceTable const table(morva::compress(points));
  for (std::size_t i = 0; i < table.size(); ++i) {
    lists.push_back(values_of(table, i, use_distance));
  }
}

double HParaPrefer::get_value(HPointN const& a, HPointN const& b, bool use_distance) {
  return use_distance ? HPointN::get_distance(a, b) : HPointN::get_cos_similarity(a, b);
}

double HParaPrefer::smart_eps(Lists const& lists, int const& min_points) {
  return estimate(lists.size(), min_points,
                  [&](std::size_t i) -> std::vector<double> const& { return lists[i]; });
}

void HParaPrefer::get_nearest_minpts(std::vector<double> const& list, int const& min_points,
                                     std::vector<double>& out) {
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
    out.push_back(last);
  }
}

void HParaPrefer::get_vt_nearest_minpts(Lists const& lists, int const& min_points,
                                        Lists& out_lists) {
  for (std::vector<double> const& list : lists) {
    std::vector<double> nearest;
    get_nearest_minpts(list, min_points, nearest);
    out_lists.push_back(std::move(nearest));
  }
}

void HParaPrefer::get_nearest_value(std::vector<double> const& list, double const& avg,
                                    int const& min_points, std::vector<double>& out) {
  auto const wanted = static_cast<std::size_t>(min_points);
  if (wanted > list.size()) {
    out.assign(list.size(), 0.0);
    return;
  }
  double const limit = avg + margin;
  out.clear();
  for (std::size_t i = 0; i < list.size() && (list[i] <= limit || i < wanted); ++i) {
    out.push_back(list[i]);
  }
}

void HParaPrefer::get_vt_nearest_value(Lists const& lists, double const& avg, int const& min_points,
                                       Lists& out_lists) {
  for (std::vector<double> const& list : lists) {
    std::vector<double> nearest;
    get_nearest_value(list, avg, min_points, nearest);
    out_lists.push_back(std::move(nearest));
  }
}

double HParaPrefer::get_max_nearest(std::vector<double> const& list) {
  double greatest = 0.0;
  for (double const value : list) {
    greatest = value > greatest ? value : greatest;
  }
  return greatest;
}

double HParaPrefer::get_min_nearest(std::vector<double> const& list) {
  double least = greatest_nearest;
  for (double const value : list) {
    least = value < least ? value : least;
  }
  return least;
}

void HParaPrefer::get_vt_max_nearest(Lists const& lists, std::vector<double>& out) {
  out.clear();
  for (std::vector<double> const& list : lists) {
    out.push_back(get_max_nearest(list));
  }
}

void HParaPrefer::get_vt_min_nearest(Lists const& lists, std::vector<double>& out) {
  for (std::vector<double> const& list : lists) {
    out.push_back(get_min_nearest(list));
  }
}

double HParaPrefer::get_vt_avg(std::vector<double> const& list) {
  double sum = 0.0;
  for (double const value : list) {
    sum += value;
  }
  return sum / static_cast<double>(list.size());
}

void HParaPrefer::get_vt_vt_avg(Lists const& lists, std::vector<double>& out) {
  for (std::vector<double> const& list : lists) {
    out.push_back(get_vt_avg(list));
  }
}
