#include "cluster/HParaPrefer.h"

#include <algorithm>
#include <cstddef>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/division.h"

namespace {

constexpr double margin = 0.05999999;
constexpr double greatest_nearest = 4503599627370496.0;

using Lists = std::vector<std::vector<double>>;

std::vector<double> smallest(morva::DistanceTable const& table, std::size_t i, std::size_t count,
                             bool use_distance) {
  return use_distance ? table.smallest_distances(i, count) : table.smallest_similarities(i, count);
}

// How far the neighbours of a point reach, and its nearest.
struct Reach {
  double farthest;
  double nearest;
};

Reach reach_of(std::vector<double> const& values) {
  return {HParaPrefer::get_max_nearest(values), HParaPrefer::get_min_nearest(values)};
}

// The smallest values of each point of some rows against all others, ascending: at first few, and
// more of them as soon as they are asked for.
class ValueLists {
 public:
  ValueLists(morva::DistanceTable const& table, bool use_distance, morva::Rows rows)
      : table_(table), use_distance_(use_distance), rows_(rows), prefixes_(rows.size()) {
    if (use_distance) {
      prefixes_ = morva::smallest_distances(table, kept_values, rows);
    }
  }

  std::size_t length() const { return table_.size() - 1; }

  // Calls `take` with a prefix of list i that is long enough for `take` to stop before its end, or
  // with the whole list.
  template <typename Take>
  void read(std::size_t i, std::size_t at_least, Take const& take) {
    std::size_t count = std::max(at_least, kept_values);
    std::vector<double>& kept = prefixes_[i - rows_.begin];
    if (kept.empty()) {
      kept = smallest(table_, i, kept_values, use_distance_);
    }
    std::vector<double> longer;
    while (true) {
      bool const is_kept = count <= kept_values;
      if (!is_kept) {
        longer = smallest(table_, i, count, use_distance_);
      }
      std::vector<double> const& prefix = is_kept ? kept : longer;
      if (take(prefix) < prefix.size() || prefix.size() == length()) {
        return;
      }
      count = 4 * prefix.size();
    }
  }

  // What `get_nearest_value` picks from each list, without making the lists: the first values and
  // all that are not above the limit, of which the last tells.
  std::vector<Reach> reaches_together(double average, int min_points) {
    double const limit = average + margin;
    auto const wanted = static_cast<std::size_t>(min_points);
    if (wanted > length()) {
      return std::vector<Reach>(rows_.size(), reach_of(std::vector<double>(length(), 0.0)));
    }
    std::vector<double> const farthest = morva::greatest_within(table_, limit, rows_);
    std::vector<Reach> reaches;
    for (std::size_t i = rows_.begin; i < rows_.end; ++i) {
      read(i, wanted, [&](std::vector<double> const& list) {
        auto const first = list.begin() + static_cast<std::ptrdiff_t>(wanted);
        Reach reach = reach_of({list.begin(), first});
        reach.farthest = std::max(reach.farthest, farthest[i - rows_.begin]);
        if (!list.empty() && list.front() <= limit) {
          reach.nearest = std::min(reach.nearest, list.front());
        }
        reaches.push_back(reach);
        return std::size_t{0};
      });
    }
    return reaches;
  }

 private:
  static constexpr std::size_t kept_values = 8;

  morva::DistanceTable const& table_;
  bool use_distance_;
  morva::Rows rows_;
  std::vector<std::vector<double>> prefixes_;
};

// The mean reach of the points whose nearest neighbour lies within `limit`.
double mean_reach(std::vector<Reach> const& reaches, double limit) {
  std::vector<double> kept;
  for (Reach const& reach : reaches) {
    if (reach.nearest <= limit) {
      kept.push_back(reach.farthest);
    }
  }
  return HParaPrefer::get_vt_avg(kept);
}

// What the first `min_points` different values of each list reach. `read(i, at_least, take)` calls
// `take` with list i, or with so much of its beginning, at least that many values, that `take` uses
// fewer than it gets.
template <typename Read>
std::vector<double> distinct_reaches(morva::Rows lists, int min_points, Read const& read) {
  std::vector<double> reaches;
  std::vector<double> part;
  for (std::size_t i = lists.begin; i < lists.end; ++i) {
    read(i, 0, [&](std::vector<double> const& list) {
      part.clear();
      HParaPrefer::get_nearest_minpts(list, min_points, part);
      return part.size();
    });
    reaches.push_back(HParaPrefer::get_max_nearest(part));
  }
  return reaches;
}

// What `get_nearest_value` picks from each list.
template <typename Read>
std::vector<Reach> value_reaches(morva::Rows lists, std::size_t at_least, double average,
                                 int min_points, Read const& read) {
  std::vector<Reach> reaches;
  std::vector<double> part;
  for (std::size_t i = lists.begin; i < lists.end; ++i) {
    read(i, at_least, [&](std::vector<double> const& list) {
      HParaPrefer::get_nearest_value(list, average, min_points, part);
      return part.size();
    });
    reaches.push_back(reach_of(part));
  }
  return reaches;
}

}  // namespace

HParaPrefer::HParaPrefer() = default;
HParaPrefer::~HParaPrefer() = default;

double HParaPrefer::get_eps(std::vector<HPointN> const& points, int const& min_points,
                            bool use_distance) {
  return eps_of(morva::DistanceTable(morva::compress(points)), min_points, use_distance);
}

double HParaPrefer::eps_of(morva::DistanceTable const& table, int min_points, bool use_distance) {
  if (table.size() == 0) {
    return 0.0;
  }
  morva::Division const division(table);
  morva::Rows const rows = division.rows(table.size());
  ValueLists lists(table, use_distance, rows);
  auto const read = [&](std::size_t i, std::size_t at_least, auto const& take) {
    lists.read(i, at_least, take);
  };
  double const average =
      get_vt_avg(division.join(distinct_reaches(rows, min_points, read), table.size()));
  std::size_t const at_least = std::min(static_cast<std::size_t>(min_points), lists.length()) + 1;
  std::vector<Reach> reaches = use_distance
                                   ? lists.reaches_together(average, min_points)
                                   : value_reaches(rows, at_least, average, min_points, read);
  table.release_all_but_floats();
  return mean_reach(division.join(std::move(reaches), table.size()), average);
}

void HParaPrefer::get_vt_all(std::vector<HPointN> const& points, Lists& lists, bool use_distance) {
  if (points.empty()) {
    return;
  }
  morva::DistanceTable const table(morva::compress(points));
  for (std::size_t i = 0; i < table.size(); ++i) {
    lists.push_back(smallest(table, i, table.size() - 1, use_distance));
  }
}

double HParaPrefer::get_value(HPointN const& a, HPointN const& b, bool use_distance) {
  return use_distance ? HPointN::get_distance(a, b) : HPointN::get_cos_similarity(a, b);
}

double HParaPrefer::smart_eps(Lists const& lists, int const& min_points) {
  if (lists.empty()) {
    return 0.0;
  }
  morva::Rows const all{0, lists.size()};
  auto const read = [&](std::size_t i, std::size_t /*at_least*/, auto const& take) {
    take(lists[i]);
  };
  double const average = get_vt_avg(distinct_reaches(all, min_points, read));
  return mean_reach(value_reaches(all, 0, average, min_points, read), average);
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
  for (std::size_t i = 0; i < list.size() && (!(list[i] > limit) || i < wanted); ++i) {
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
