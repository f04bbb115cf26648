#include "numeric/internal/nearest_means.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/mean_products.h"

namespace morva {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::size_t none = static_cast<std::size_t>(-1);

bool is_same(SparsePoint const& a, SparsePoint const& b) {
  return a.n == b.n && a.columns == b.columns && a.values == b.values;
}

}  // namespace

// Some of the means, with bounds on the squares of their distances from one point. A mean of
// another dimension is infinitely far from it.
class NearestMeans::Candidates {
 public:
  Candidates(DistanceTable const& means, std::vector<std::size_t> which, long long n)
      : which_(std::move(which)),
        products_(pointers_to(means, which_)),
        low_(which_.size()),
        high_(which_.size()) {
    for (std::size_t const mean : which_) {
      parts_.emplace_back(means[mean]);
      is_far_.push_back(means[mean].n == n ? 0 : 1);
    }
  }

  void measure(SparsePoint const& x) {
    products_.multiply(x, low_);
    SquareBounds::Part const part(x);
    for (std::size_t place = 0; place < which_.size(); ++place) {
      SquareBounds const square(part, parts_[place], low_[place]);
      low_[place] = square.low;
      high_[place] = square.high;
      if (is_far_[place] != 0) {
        low_[place] = infinity;
        high_[place] = infinity;
      }
    }
  }

  std::size_t size() const { return which_.size(); }
  std::size_t mean(std::size_t place) const { return which_[place]; }
  double low(std::size_t place) const { return low_[place]; }
  double high(std::size_t place) const { return high_[place]; }
  // Where a mean is among these, or none.
  std::size_t place_of(std::size_t mean) const {
    auto const found = std::lower_bound(which_.begin(), which_.end(), mean);
    return found != which_.end() && *found == mean
               ? static_cast<std::size_t>(found - which_.begin())
               : none;
  }
  // The smallest of the low bounds but for two of them.
  double least_low(std::size_t but, std::size_t and_but) const {
    double least = infinity;
    for (std::size_t place = 0; place < size(); ++place) {
      least = place != but && place != and_but ? std::min(least, low_[place]) : least;
    }
    return least;
  }
  // The place of the smallest of the high bounds but for one of them, or none.
  std::size_t nearest(std::size_t but) const {
    std::size_t result = none;
    for (std::size_t place = 0; place < size(); ++place) {
      if (place != but && (result == none || high_[place] < high_[result])) {
        result = place;
      }
    }
    return result;
  }

 private:
  static std::vector<SparsePoint const*> pointers_to(DistanceTable const& means,
                                                     std::vector<std::size_t> const& which) {
    std::vector<SparsePoint const*> pointers;
    pointers.reserve(which.size());
    for (std::size_t const mean : which) {
      pointers.push_back(&means[mean]);
    }
    return pointers;
  }

  std::vector<std::size_t> which_;
  std::vector<SquareBounds::Part> parts_;
  std::vector<char> is_far_;
  MeanProducts products_;
  std::vector<double> low_;
  std::vector<double> high_;
};

// How far each of the means has moved, not less than it truly is.
class NearestMeans::Shifts {
 public:
  Shifts(std::vector<SparsePoint> const& before, DistanceTable const& now) {
    for (std::size_t mean = 0; mean < before.size(); ++mean) {
      roundings_ = std::max(roundings_, SquareBounds::Part(now[mean]).roundings);
      double const shift = shift_of(before[mean], now[mean]);
      shifts_.push_back(shift);
      if (shift > greatest_) {
        second_ = std::exchange(greatest_, shift);
        farthest_ = mean;
      } else {
        second_ = std::max(second_, shift);
      }
    }
  }

  // The means that have moved at all.
  std::vector<std::size_t> moved() const {
    std::vector<std::size_t> result;
    for (std::size_t mean = 0; mean < shifts_.size(); ++mean) {
      if (shifts_[mean] != 0.0) {
        result.push_back(mean);
      }
    }
    return result;
  }

  // What is known of a point, for where the means are now.
  Known carry(SparsePoint const& x, Known const& known) const {
    double const own = shifts_[known.nearest];
    double const other = known.nearest == farthest_ ? second_ : greatest_;
    double const room =
        (SquareBounds::Part(x).roundings + roundings_) * std::numeric_limits<double>::epsilon();
    double const root = std::sqrt(known.high) + own;
    return {known.nearest, nearer(known.low, own, room), root * root * (1.0 + room),
            nearer(known.others, other, room)};
  }

 private:
  static double shift_of(SparsePoint const& before, SparsePoint const& now) {
    if (is_same(before, now)) {
      return 0.0;
    }
    if (before.n != now.n) {
      return infinity;
    }
    // What is lost where squares are too small for a double is less by far.
    constexpr double least_shift = 1e-150;
    double const room = (SquareBounds::Part(before).roundings + SquareBounds::Part(now).roundings) *
                        std::numeric_limits<double>::epsilon();
    return distance(before, now) * (1.0 + room) + least_shift;
  }

  // The room is taken for the roundings here and for those of the distance that is summed anew,
  // which has no more of them than its square has in proportion unless it is tiny.
  static double nearer(double square, double shift, double room) {
    constexpr double root_room = 2.0 * std::numeric_limits<double>::epsilon();
    constexpr double least_square = 0x1p-960;
    double const root = std::sqrt(std::max(square, 0.0)) * (1.0 - root_room) - shift;
    double const result = root * root * (1.0 - room);
    return root > 0.0 && result > least_square ? result : 0.0;
  }

  std::vector<double> shifts_;
  std::size_t farthest_ = none;
  double greatest_ = 0.0;
  // The greatest but for that one.
  double second_ = 0.0;
  double roundings_ = 0.0;
};

// Where no mean can be measured, all are equally far.
bool NearestMeans::can_bound(DistanceTable const& means) const {
  if (!points_.has_sparse_bounds() || points_.size() == 0) {
    return false;
  }
  auto const& all = means.points();
  return std::all_of(all.begin(), all.end(),
                     [](SparsePoint const& mean) { return mean.is_tame; }) &&
         std::any_of(all.begin(), all.end(),
                     [this](SparsePoint const& mean) { return mean.n == points_[0].n; });
}

// The last of the nearest of all.
NearestMeans::Known NearestMeans::search(SparsePoint const& x, DistanceTable const& means,
                                         Candidates const& all) {
  std::size_t nearest = all.nearest(none);
  double const reach = all.high(nearest);
  if (all.least_low(nearest, none) <= reach) {
    double least = infinity;
    for (std::size_t mean = 0; mean < all.size(); ++mean) {
      double const measured = all.low(mean) <= reach ? distance(x, means[mean]) : infinity;
      if (measured < infinity && measured <= least) {
        least = measured;
        nearest = mean;
      }
    }
  }
  return {nearest, all.low(nearest), all.high(nearest), all.least_low(nearest, none)};
}

// Whether the nearest mean is certain now that some have moved; `known` then tells it.
bool NearestMeans::follow(Candidates const& moved, Known& known) {
  std::size_t const own = moved.place_of(known.nearest);
  double const low = own == none ? known.low : moved.low(own);
  double const high = own == none ? known.high : moved.high(own);
  std::size_t const rival = moved.nearest(own);
  if (rival == none) {
    known.low = low;
    known.high = high;
    return high < known.others;
  }
  double const others = std::min(known.others, moved.least_low(own, rival));
  double const rival_low = moved.low(rival);
  if (high < others && high < rival_low) {
    known = {known.nearest, low, high, std::min(others, rival_low)};
    return true;
  }
  double const rival_high = moved.high(rival);
  if (rival_high < others && rival_high < low) {
    known = {moved.mean(rival), rival_low, rival_high, std::min(others, low)};
    return true;
  }
  return false;
}

void NearestMeans::find(DistanceTable const& means, Rows rows, std::span<std::size_t> out) {
  if (!can_bound(means)) {
    known_.clear();
    find_nearest(means, points_, rows, out);
    return;
  }
  bool const is_known = !known_.empty() && rows.begin == rows_.begin && rows.end == rows_.end &&
                        means.size() == means_.size();
  std::optional<Shifts> shifts;
  std::optional<Candidates> moved;
  if (is_known) {
    shifts.emplace(means_, means);
    std::vector<std::size_t> which = shifts->moved();
    // Where most have moved, looking at them first is lost as a rule.
    if (which.size() <= means.size() / 2) {
      moved.emplace(means, std::move(which), points_[0].n);
    }
  }
  // Made for the first point that needs it: copying all means costs more than few that moved.
  std::optional<Candidates> all;
  known_.resize(rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    Known& known = known_[i - rows.begin];
    if (shifts) {
      Known const carried = shifts->carry(points_[i], known);
      if (carried.high < carried.others) {
        known = carried;
        out[i - rows.begin] = known.nearest;
        continue;
      }
    }
    if (moved) {
      moved->measure(points_[i]);
    }
    if (!moved || !follow(*moved, known)) {
      if (!all) {
        std::vector<std::size_t> every_mean(means.size());
        std::iota(every_mean.begin(), every_mean.end(), std::size_t{0});
        all.emplace(means, std::move(every_mean), points_[0].n);
      }
      all->measure(points_[i]);
      known = search(points_[i], means, *all);
    }
    out[i - rows.begin] = known.nearest;
  }
  rows_ = rows;
  means_ = means.points();
}

}  // namespace morva
