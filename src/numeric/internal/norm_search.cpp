#include "numeric/internal/norm_search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include "numeric/internal/spread_point.h"

namespace morva {

namespace {

// So many points at most are compared with each other before rows are divided.
constexpr std::size_t most_common_points = 1024;

class NormSearch {
 public:
  explicit NormSearch(DistanceTable const& table)
      : table_(table), order_(table.size()), spread_(column_count(table.points())) {
    double roundings = 0.0;
    for (SparsePoint const& point : table.points()) {
      roundings = std::max(roundings, SquareBounds::Part(point).roundings);
      has_negative_ = has_negative_ || std::any_of(point.values.begin(), point.values.end(),
                                                   [](double value) { return value < 0.0; });
    }
    room_ = 1.0 + 4.0 * roundings * std::numeric_limits<double>::epsilon();
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::sort(order_.begin(), order_.end(), [&table](std::size_t a, std::size_t b) {
      return precedes(table[a], table[b]) || (!precedes(table[b], table[a]) && a < b);
    });
    // Of equal points the first is in the first of the pairs.
    order_.erase(std::unique(order_.begin(), order_.end(),
                             [&table](std::size_t a, std::size_t b) {
                               return !precedes(table[a], table[b]);
                             }),
                 order_.end());
  }

  std::optional<FoundPair> farthest(Rows rows) {
    if (order_.empty()) {
      return {};
    }
    std::size_t const few = table_.size() / 4;
    std::size_t const common = std::min({most_common_points, few, order_.size()});
    search(0, common, every_row);
    // The same in every part, so that all go the same way.
    auto const out = std::partition_point(order_.begin(), order_.end(), [this](std::size_t j) {
      return can_reach(order_.front(), j);
    });
    if (static_cast<std::size_t>(out - order_.begin()) > few) {
      search_whole(rows);
    } else {
      search(common, order_.size(), rows);
    }
    return best_;
  }

 private:
  // By descending length.
  static bool precedes(SparsePoint const& a, SparsePoint const& b) {
    if (a.square_sum != b.square_sum) {
      return a.square_sum > b.square_sum;
    }
    return a.columns != b.columns ? a.columns < b.columns : a.values < b.values;
  }

  bool can_reach(std::size_t i, std::size_t j) const {
    double const a = table_[i].square_sum;
    double const b = table_[j].square_sum;
    double const most = has_negative_ ? a + b + 2.0 * std::sqrt(a) * std::sqrt(b) : a + b;
    return most * room_ >= reach_;
  }

  // Each of the points from one place of the order to another with all before it, until none can
  // reach what is known; those that are in `rows`.
  void search(std::size_t begin, std::size_t end, Rows rows) {
    for (std::size_t place = begin; place < end; ++place) {
      std::size_t const i = order_[place];
      if (!can_reach(order_.front(), i)) {
        break;
      }
      if (i >= rows.begin && i < rows.end) {
        compare_with_longer(i, place);
      }
    }
  }

  void compare_with_longer(std::size_t i, std::size_t place) {
    SparsePoint const& x = table_[i];
    spread_.become(x);
    for (std::size_t const j : std::span<std::size_t const>(order_).first(place)) {
      if (!can_reach(i, j)) {
        break;
      }
      SparsePoint const& y = table_[j];
      SquareBounds const square(x, y, spread_.dot(y));
      if (square.high >= reach_) {
        reach_ = std::max(reach_, square.low);
        take({std::min(i, j), std::max(i, j), distance(x, y)});
      }
    }
  }

  // Row by row, as if nothing were known of lengths.
  void search_whole(Rows rows) {
    Rows const part = rows.up_to(table_.size());
    for (std::size_t i = part.begin; i < part.end; ++i) {
      double floor = best_ ? best_->distance : 0.0;
      if (best_ && i <= best_->i) {
        // A pair that is as far comes first.
        floor = std::nextafter(floor, 0.0);
      }
      if (auto const found = table_.farthest(table_[i], i + 1, floor)) {
        take({i, found->index, found->distance});
      }
    }
  }

  void take(FoundPair const& pair) {
    if (is_farther(pair, best_)) {
      best_ = pair;
      reach_ = std::max(reach_, pair.distance * pair.distance * (1.0 - root_slack));
    }
  }

  DistanceTable const& table_;
  // Points by descending length.
  std::vector<std::size_t> order_;
  // The point that is compared.
  SpreadPoint spread_;
  bool has_negative_ = false;
  // For the roundings of squares.
  double room_ = 1.0;
  std::optional<FoundPair> best_;
  // What the square of the greatest distance is not below.
  double reach_ = 0.0;
};

}  // namespace

std::optional<FoundPair> farthest_by_norms(DistanceTable const& table, Rows rows) {
  return NormSearch(table).farthest(rows);
}

}  // namespace morva
