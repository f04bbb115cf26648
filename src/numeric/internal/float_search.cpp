#include "numeric/internal/float_search.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

#include "numeric/internal/ascending.h"
#include "numeric/internal/center_finder.h"
#include "numeric/internal/list_states.h"
#include "numeric/internal/no_distance.h"
#include "numeric/internal/wide.h"

namespace morva {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
// What `wide::compare` says of bounds.
enum State : char { outside = 0, open = 1, inside = 2 };

}  // namespace

FloatSearch::FloatSearch(DistanceTable const& table, FloatLanes const& floats)
    : table_(table), floats_(floats), states_(table.size()), open_distances_(table) {}

namespace {

// Calls `take(block, part)` for the part of the rows that lies in each block, which begins at a
// multiple of `wide::rows_together`.
template <typename Take>
void for_each_block(Rows rows, Take const& take) {
  constexpr std::size_t height = wide::rows_together;
  for (std::size_t block = rows.begin / height * height; block < rows.end; block += height) {
    take(block, Rows{std::max(block, rows.begin), std::min(block + height, rows.end)});
  }
}

}  // namespace

// Calls `take(i, first, lows, highs)` for each point i of the rows with the bounds to a part of the
// points, those from `first` on.
template <typename Take>
void FloatSearch::for_each_row(Rows rows, Part part, Take const& take) {
  std::size_t const size = table_.size();
  for_each_block(rows, [&](std::size_t block, Rows inside) {
    floats_.bound_squares(floats_, block, part == Part::all ? 0 : block, bounds_);
    for (std::size_t i = inside.begin; i < inside.end; ++i) {
      std::size_t const first = part == Part::all ? 0 : i + 1;
      take(i, first, bounds_.lows(i - block, first, size), bounds_.highs(i - block, first, size));
    }
  });
}

// Collects the points whose state is open; `states[0]` is that of point `first`.
void FloatSearch::list_open(std::span<char const> states, std::size_t first) {
  open_.clear();
  list_states(states, open, first, open_);
}

namespace {

// Of the points by descending distance from one of them, and a pair that is far apart.
class Radii {
 public:
  explicit Radii(DistanceTable const& table) : order_(table.size()), radii_(table.size()) {
    std::vector<SparsePoint const*> all;
    for (SparsePoint const& point : table.points()) {
      all.push_back(&point);
    }
    SparsePoint const center =
        CenterFinder().mean(table[0].n, all, static_cast<double>(all.size()));
    for (std::size_t j = 0; j < radii_.size(); ++j) {
      radii_[j] = distance(center, table[j]);
    }
    std::iota(order_.begin(), order_.end(), 0);
    std::sort(order_.begin(), order_.end(),
              [this](std::size_t a, std::size_t b) { return radii_[a] > radii_[b]; });
    for (SparsePoint const& point : table.points()) {
      reach_ = std::max(reach_, distance(table[order_.front()], point));
    }
  }

  std::span<std::size_t const> order() const { return order_; }
  // Number of the points, in order, that can be as far from that at a place as the known pair.
  std::size_t count_for(std::size_t place) const {
    // Far more room than the roundings of three distances and a sum take.
    constexpr double room = 1e-9;
    double const needed = reach_ * (1.0 - room) - radii_[order_[place]];
    auto const end = std::partition_point(order_.begin(), order_.end(),
                                          [&](std::size_t j) { return radii_[j] >= needed; });
    return static_cast<std::size_t>(end - order_.begin());
  }

 private:
  std::vector<std::size_t> order_;
  std::vector<double> radii_;
  double reach_ = 0.0;
};

}  // namespace

std::optional<FoundPair> FloatSearch::farthest_pair(Rows rows) {
  Radii const radii(table_);
  auto const order = radii.order();
  FloatLanes const sorted(table_.points(), order, table_[0].n, floats_.scale());
  std::optional<FoundPair> result;
  float reach = sorted.square_of(0.0).low;
  for_each_block(rows, [&](std::size_t block, Rows inside) {
    std::size_t const end = radii.count_for(block);
    if (end <= block + 1) {
      return;
    }
    sorted.bound_squares(sorted, block, block, end, bounds_);
    for (std::size_t i = inside.begin; i < std::min(end, inside.end); ++i) {
      auto const lows = bounds_.lows(i - block, i + 1, end);
      auto const highs = bounds_.highs(i - block, i + 1, end);
      if (wide::greatest(highs) < reach) {
        continue;
      }
      reach = std::max(reach, wide::greatest(lows));
      auto const states = std::span(states_).first(lows.size());
      // Open is what is not certainly below.
      wide::compare(lows, highs, reach, infinity, states);
      list_open(states, i + 1);
      for (std::size_t& place : open_) {
        place = order[place];
      }
      open_distances_.measure(table_[order[i]], 0, open_, [&](std::size_t j, double measured) {
        FoundPair const pair{std::min(order[i], j), std::max(order[i], j), measured};
        result = is_farther(pair, result) ? pair : result;
      });
      reach = std::max(reach, sorted.square_of(result ? result->distance : 0.0).low);
    }
  });
  return result;
}

std::optional<FoundPair> FloatSearch::closest_pair() {
  std::optional<FoundPair> result;
  double least = no_distance;
  float reach = infinity;
  for_each_row(every_row.up_to(table_.size()), Part::behind,
               [&](std::size_t i, std::size_t first, auto lows, auto highs) {
                 if (least == 0.0 || wide::least(lows) > reach) {
                   return;
                 }
                 reach = std::min(reach, wide::least(highs));
                 auto const states = std::span(states_).first(lows.size());
                 wide::compare(lows, highs, -infinity, reach, states);
                 list_open(states, first);
                 open_distances_.measure(table_[i], first, open_,
                                         [&](std::size_t j, double measured) {
                                           if (measured < least) {
                                             least = measured;
                                             result = FoundPair{i, j, measured};
                                           }
                                         });
                 reach = std::min(reach, floats_.square_of(least).high);
               });
  return result;
}

std::span<std::uint32_t const> FloatSearch::neighbours(std::size_t i, double limit,
                                                       DistanceTable::Border border) {
  std::size_t const block = i / wide::rows_together * wide::rows_together;
  if (block != block_) {
    floats_.bound_squares(floats_, block, block, bounds_);
    block_ = block;
  }
  FloatLanes::Square const square = floats_.square_of(limit);
  auto const lows = bounds_.lows(i - block, i, table_.size());
  auto const states = std::span(states_).first(lows.size());
  wide::compare(lows, bounds_.highs(i - block, i, table_.size()), square.low, square.high, states);
  list_open(states, i);
  open_distances_.measure(table_[i], i, open_, [&](std::size_t j, double measured) {
    states[j - i] = DistanceTable::is_in(measured, limit, border) ? inside : outside;
  });
  near_.clear();
  list_states(states, inside, i, near_);
  return near_;
}

std::vector<std::vector<double>> FloatSearch::smallest_distances(Rows rows, std::size_t count) {
  std::vector<std::vector<double>> result;
  result.reserve(rows.size());
  std::array<float, wide::strands> least;
  for_each_row(rows, Part::all, [&](std::size_t i, std::size_t /*first*/, auto lows, auto highs) {
    // Each strand has at least one value that is not above its smallest: of count + 1 of them, one
    // can be that of point i.
    float reach = infinity;
    if (count + 1 < least.size()) {
      wide::least_of_strands(highs, least);
      std::nth_element(least.begin(), least.begin() + static_cast<std::ptrdiff_t>(count),
                       least.end());
      reach = least[count];
    }
    wide::compare(lows, highs, -infinity, reach, states_);
    states_[i] = outside;
    list_open(states_, 0);
    std::vector<double> distances;
    distances.reserve(open_.size());
    open_distances_.measure(table_[i], 0, open_, [&](std::size_t /*j*/, double measured) {
      distances.push_back(measured);
    });
    result.push_back(smallest(count, std::move(distances)));
  });
  return result;
}

std::vector<double> FloatSearch::greatest_within(Rows rows, double limit) {
  FloatLanes::Square const square = floats_.square_of(limit);
  std::vector<double> result(rows.size(), 0.0);
  for_each_row(rows, Part::all, [&](std::size_t i, std::size_t /*first*/, auto lows, auto highs) {
    // Open is what may be within the limit and is not certainly less than another within it.
    float const reach = wide::greatest_below(square.low, lows, highs);
    wide::compare(lows, highs, reach, square.high, states_);
    states_[i] = outside;
    list_open(states_, 0);
    double& greatest = result[i - rows.begin];
    open_distances_.measure(table_[i], 0, open_, [&](std::size_t /*j*/, double measured) {
      if (measured > greatest && measured <= limit) {
        greatest = measured;
      }
    });
  });
  return result;
}

void FloatSearch::nearest(DistanceTable const& points, FloatLanes const& floats, Rows rows,
                          std::span<std::size_t> out) {
  std::size_t const size = table_.size();
  for_each_block(rows, [&](std::size_t block, Rows inside) {
    floats_.bound_squares(floats, block, 0, bounds_);
    for (std::size_t i = inside.begin; i < inside.end; ++i) {
      auto const lows = bounds_.lows(i - block, 0, size);
      float const reach = wide::least(bounds_.highs(i - block, 0, size));
      open_.clear();
      for (std::size_t j = 0; j < size; ++j) {
        if (lows[j] <= reach) {
          open_.push_back(j);
        }
      }
      std::size_t& found = out[i - rows.begin];
      found = open_.empty() ? 0 : open_.front();
      if (open_.size() < 2) {
        continue;
      }
      double least = no_distance;
      open_distances_.measure(points[i], 0, open_, [&](std::size_t j, double measured) {
        if (measured <= least) {
          least = measured;
          found = j;
        }
      });
    }
  });
}

}  // namespace morva
