#include "numeric/internal/distance_table.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "numeric/internal/ascending.h"
#include "numeric/internal/no_distance.h"
#include "numeric/internal/open_distances.h"
#include "numeric/internal/point_block.h"

namespace morva {

namespace {

constexpr double no_distance_squared = no_distance * no_distance;
// So many share the way of the points through the cache.
constexpr std::size_t rows_at_once = 16;
constexpr std::size_t least_indexed = 512;

std::size_t value_count(std::vector<SparsePoint> const& points) {
  return std::accumulate(
      points.begin(), points.end(), std::size_t{0},
      [](std::size_t sum, SparsePoint const& point) { return sum + point.values.size(); });
}

// Interleaving pays as soon as its columns, with the zeros and the room for more points that are
// among them, are read no slower than scattered values.
DistanceTable::Form fitting_form(std::vector<SparsePoint> const& points) {
  bool const is_dense =
      value_count(points) > column_count(points) * Lanes::padded(points.size()) / 3;
  return is_dense ? DistanceTable::Form::dense : DistanceTable::Form::sparse;
}

// The last index with the smallest distance that is not above `no_distance`; 0 where there is none.
template <typename Distance>
std::size_t last_nearest(std::size_t count, Distance const& distance_to) {
  std::size_t nearest = 0;
  double least = no_distance;
  for (std::size_t j = 0; j < count; ++j) {
    double const measured = distance_to(j);
    if (measured <= least) {
      least = measured;
      nearest = j;
    }
  }
  return nearest;
}

// The value at a position of the ascending order: one pass, as few are among the smallest so far.
double value_at(std::size_t position, std::span<double const> values) {
  std::vector<double> heap(values.begin(),
                           values.begin() + static_cast<std::ptrdiff_t>(position + 1));
  std::make_heap(heap.begin(), heap.end());
  for (double const value : values.subspan(position + 1)) {
    if (value < heap.front()) {
      std::pop_heap(heap.begin(), heap.end());
      heap.back() = value;
      std::push_heap(heap.begin(), heap.end());
    }
  }
  return heap.front();
}

}  // namespace

void require_countable(std::size_t values) {
  if (values > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error(
        "more values than a table of points can have, 4294967295: take fewer points");
  }
}

DistanceTable::DistanceTable(std::vector<SparsePoint> points, std::optional<Form> form)
    : points_(std::move(points)), form_(form.value_or(fitting_form(points_))) {
  require_countable(value_count(points_));
  for (SparsePoint const& point : points_) {
    is_uniform_ = is_uniform_ && point.n == points_.front().n;
    is_tame_ = is_tame_ && point.is_tame;
  }
  if (form_ == Form::sparse) {
    bound_parts_.assign(points_.begin(), points_.end());
  }
}

std::variant<Postings, Lanes> const& DistanceTable::columns() const {
  if (!columns_) {
    if (form_ == Form::dense) {
      columns_.emplace(std::in_place_type<Lanes>, points_);
    } else {
      columns_.emplace(std::in_place_type<Postings>, points_);
    }
  }
  return *columns_;
}

void DistanceTable::release_all_but_floats() const {
  columns_.reset();
  index_.reset();
  own_points_.reset();
}

void DistanceTable::set_group(std::shared_ptr<HProcessGroup> group) const {
  group_ = std::move(group);
  own_points_.reset();
}

DistanceTable const& DistanceTable::own_points() const {
  if (!own_points_) {
    auto const step = static_cast<std::size_t>(group_->size());
    std::vector<SparsePoint> own;
    for (auto i = static_cast<std::size_t>(group_->rank()); i < size(); i += step) {
      own.push_back(points_[i]);
    }
    own_points_ = std::make_unique<DistanceTable const>(std::move(own), form_);
  }
  return *own_points_;
}

FloatLanes const* DistanceTable::floats() const {
  if (!floats_ && form_ == Form::dense && is_tame_ && is_uniform_ && !points_.empty()) {
    floats_.emplace(points_, points_.front().n, FloatLanes::scale_for(points_));
  }
  return floats_ ? &*floats_ : nullptr;
}

InvertedIndex const* DistanceTable::index() const {
  if (!index_ && has_sparse_bounds() && size() >= least_indexed && InvertedIndex::suits(points_)) {
    index_.emplace(points_);
  }
  return index_ ? &*index_ : nullptr;
}

void DistanceTable::mark_unequal(SparsePoint const& x, std::size_t first, std::span<double> out,
                                 double value) const {
  if (is_uniform_ && (points_.empty() || x.n == points_.front().n)) {
    return;
  }
  for (std::size_t j = 0; j < out.size(); ++j) {
    if (points_[first + j].n != x.n) {
      out[j] = value;
    }
  }
}

void DistanceTable::distances(SparsePoint const& x, std::size_t first,
                              std::span<double> out) const {
  if (auto const* dense = std::get_if<Lanes>(&columns())) {
    dense->distances(x, first, out);
  } else if (first == 0 && out.size() == size()) {
    std::get<Postings>(columns()).distances(x, out);
  } else {
    std::vector<double> all(size());
    std::get<Postings>(columns()).distances(x, all);
    std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(first), out.size(), out.begin());
  }
  mark_unequal(x, first, out, no_distance);
}

void DistanceTable::similarities(SparsePoint const& x, std::size_t first,
                                 std::span<double> out) const {
  // Zero times a value that is not finite is not zero: such data is multiplied pair by pair.
  if (!is_tame_ || !x.is_tame) {
    for (std::size_t j = 0; j < out.size(); ++j) {
      out[j] = cos_similarity(x, points_[first + j]);
    }
    return;
  }
  if (auto const* dense = std::get_if<Lanes>(&columns())) {
    dense->dots(x, first, out);
  } else {
    std::get<Postings>(columns()).dots(x, first, out);
  }
  double const root = std::sqrt(x.square_sum);
  for (std::size_t j = 0; j < out.size(); ++j) {
    out[j] = x.n <= 1 ? 0.0 : out[j] / (root * std::sqrt(points_[first + j].square_sum));
  }
  mark_unequal(x, first, out, 0.0);
}

bool DistanceTable::bound_squares(SparsePoint const& x, std::size_t first, Bounds& bounds) const {
  if (form_ == Form::dense || !is_tame_ || !x.is_tame) {
    return false;
  }
  std::size_t const count = size() - first;
  bounds.low.resize(count);
  bounds.high.resize(count);
  std::get<Postings>(columns()).dots(x, first, bounds.low);
  SquareBounds::Part const part(x);
  SquareBounds::Part const* const parts = bound_parts_.data() + first;
  for (std::size_t j = 0; j < count; ++j) {
    SquareBounds const square(part, parts[j], bounds.low[j]);
    bounds.low[j] = square.low;
    bounds.high[j] = square.high;
  }
  mark_unequal(x, first, bounds.low, no_distance_squared);
  mark_unequal(x, first, bounds.high, no_distance_squared);
  return true;
}

std::vector<double> DistanceTable::all_distances(SparsePoint const& x, std::size_t first) const {
  std::vector<double> result(size() - first);
  distances(x, first, result);
  return result;
}

void DistanceTable::within(SparsePoint const& x, std::size_t first, double limit, Border border,
                           std::span<char> out) const {
  Bounds bounds;
  if (!(limit >= 0.0) || !bound_squares(x, first, bounds)) {
    std::vector<double> const exact = all_distances(x, first);
    for (std::size_t j = 0; j < out.size(); ++j) {
      out[j] = is_in(exact[j], limit, border) ? 1 : 0;
    }
    return;
  }
  double const below = limit * limit * (1.0 - root_slack);
  double const above = limit * limit * (1.0 + root_slack);
  std::vector<std::size_t> open;
  for (std::size_t j = 0; j < out.size(); ++j) {
    out[j] = bounds.high[j] < below ? 1 : 0;
    if (bounds.high[j] >= below && bounds.low[j] <= above) {
      open.push_back(first + j);
    }
  }
  OpenDistances(*this).measure(x, first, open, [&](std::size_t j, double measured) {
    out[j - first] = is_in(measured, limit, border) ? 1 : 0;
  });
}

std::size_t DistanceTable::nearest(SparsePoint const& x) const {
  Bounds bounds;
  if (bound_squares(x, 0, bounds) && !bounds.high.empty()) {
    double const reach = *std::min_element(bounds.high.begin(), bounds.high.end());
    auto const is_open = [reach](double low) { return low <= reach; };
    auto const first = std::find_if(bounds.low.begin(), bounds.low.end(), is_open);
    auto const second = std::find_if(first + 1, bounds.low.end(), is_open);
    if (second == bounds.low.end()) {
      return static_cast<std::size_t>(first - bounds.low.begin());
    }
    return last_nearest(size(), [&](std::size_t j) {
      return is_open(bounds.low[j]) ? distance(x, points_[j])
                                    : std::numeric_limits<double>::infinity();
    });
  }
  std::vector<double> const exact = all_distances(x, 0);
  return last_nearest(size(), [&](std::size_t j) { return exact[j]; });
}

std::optional<DistanceTable::Found> DistanceTable::farthest(SparsePoint const& x, std::size_t first,
                                                            double floor) const {
  Bounds bounds;
  bool const is_bounded = bound_squares(x, first, bounds);
  std::vector<double> const exact = is_bounded ? std::vector<double>() : all_distances(x, first);
  double reach = floor * floor * (1.0 - root_slack);
  for (double const low : bounds.low) {
    reach = std::max(reach, low);
  }
  std::optional<Found> result;
  for (std::size_t j = 0; first + j < size(); ++j) {
    if (is_bounded && bounds.high[j] < reach) {
      continue;
    }
    double const measured = is_bounded ? distance(x, points_[first + j]) : exact[j];
    if (measured > floor) {
      floor = measured;
      result = Found{first + j, measured};
    }
  }
  return result;
}

std::optional<DistanceTable::Found> DistanceTable::closest(SparsePoint const& x, std::size_t first,
                                                           double ceiling) const {
  Bounds bounds;
  bool const is_bounded = bound_squares(x, first, bounds);
  std::vector<double> const exact = is_bounded ? std::vector<double>() : all_distances(x, first);
  double reach = ceiling * ceiling * (1.0 + root_slack);
  for (double const high : bounds.high) {
    reach = std::min(reach, high);
  }
  std::optional<Found> result;
  for (std::size_t j = 0; first + j < size(); ++j) {
    if (is_bounded && bounds.low[j] > reach) {
      continue;
    }
    double const measured = is_bounded ? distance(x, points_[first + j]) : exact[j];
    if (measured < ceiling) {
      ceiling = measured;
      result = Found{first + j, measured};
    }
  }
  return result;
}

std::vector<double> DistanceTable::smallest_distances(std::size_t i, std::size_t count) const {
  std::vector<double> result;
  Bounds bounds;
  if (count < size() / 8 && bound_squares(points_[i], 0, bounds)) {
    bounds.high[i] = std::numeric_limits<double>::infinity();
    double const reach = value_at(count, bounds.high);
    for (std::size_t j = 0; j < size(); ++j) {
      if (j != i && bounds.low[j] <= reach) {
        result.push_back(distance(points_[i], points_[j]));
      }
    }
  } else {
    result = all_distances(points_[i], 0);
    result.erase(result.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return smallest(count, std::move(result));
}

double DistanceTable::greatest_within(std::size_t i, double limit) const {
  Bounds bounds;
  bool const is_bounded = limit >= 0.0 && bound_squares(points_[i], 0, bounds);
  double const below = limit * limit * (1.0 - root_slack);
  double const above = limit * limit * (1.0 + root_slack);
  double reach = 0.0;
  for (std::size_t j = 0; j < bounds.high.size(); ++j) {
    reach = bounds.high[j] < below ? std::max(reach, bounds.low[j]) : reach;
  }
  std::vector<double> const exact =
      is_bounded ? std::vector<double>() : all_distances(points_[i], 0);
  double greatest = 0.0;
  for (std::size_t j = 0; j < size(); ++j) {
    if (j == i || (is_bounded && (bounds.high[j] < reach || bounds.low[j] > above))) {
      continue;
    }
    double const measured = is_bounded ? distance(points_[i], points_[j]) : exact[j];
    if (measured > greatest && measured <= limit) {
      greatest = measured;
    }
  }
  return greatest;
}

std::vector<double> DistanceTable::smallest_similarities(std::size_t i, std::size_t count) const {
  std::vector<double> result(size());
  similarities(points_[i], 0, result);
  result.erase(result.begin() + static_cast<std::ptrdiff_t>(i));
  return smallest(count, std::move(result));
}

void DistanceTable::for_each_row(Rows rows, VisitDistances const& visit) const {
  Rows const part = rows.up_to(size());
  if (form_ == Form::dense) {
    visit_dense(part, visit);
  } else {
    visit_sparse(part, visit);
  }
}

void DistanceTable::visit_row(std::size_t i, std::span<double> distances,
                              VisitDistances const& visit) const {
  mark_unequal(points_[i], i + 1, distances, no_distance);
  visit(i, distances);
}

void DistanceTable::visit_dense(Rows rows, VisitDistances const& visit) const {
  auto const& dense = std::get<Lanes>(columns());
  std::vector<double> tile(rows_at_once * (size() - rows.begin));
  for (std::size_t i = rows.begin; i < rows.end; i += rows_at_once) {
    auto const block =
        std::span<SparsePoint const>(points_).subspan(i, std::min(rows_at_once, rows.end - i));
    std::size_t const count = size() - i;
    dense.distances(block, i, std::span<double>(tile).first(block.size() * count));
    for (std::size_t r = 0; r < block.size(); ++r) {
      visit_row(i + r, std::span<double>(tile).subspan(r * count, count).subspan(r + 1), visit);
    }
  }
}

// A block of rows at a time, each against all that follow; the more rows the fewer follow, as
// memory for half of what the points take has room for.
void DistanceTable::visit_sparse(Rows rows, VisitDistances const& visit) const {
  constexpr std::size_t width = PointBlock::width;
  constexpr std::size_t least_rows = 32;
  constexpr std::size_t most_rows = 256;
  std::size_t const columns = column_count(points_);
  std::size_t const room = value_count(points_) * 3 / 4;
  SparsePoint const none;
  std::vector<double> tile;
  for (std::size_t i = rows.begin; i < rows.end;) {
    std::size_t const count = size() - i;
    std::size_t const together =
        std::min(rows.end - i, std::clamp(room / count, least_rows, most_rows));
    std::size_t const stride = (count + width - 1) / width * width;
    PointBlock block(std::span<SparsePoint const>(points_).subspan(i, together), columns);
    tile.resize(together * stride);
    for (std::size_t j = 0; j < count; j += width) {
      PointBlock::Others others;
      for (std::size_t r = 0; r < width; ++r) {
        others[r] = j + r < count ? &points_[i + j + r] : &none;
      }
      auto place = tile.begin() + static_cast<std::ptrdiff_t>(j);
      for (PointBlock::Row const& row : block.distances(others, std::min(together, j + width))) {
        std::copy(row.lanes.begin(), row.lanes.end(), place);
        place += static_cast<std::ptrdiff_t>(stride);
      }
    }
    for (std::size_t r = 0; r < together; ++r) {
      visit_row(i + r, std::span(tile).subspan(r * stride, count).subspan(r + 1), visit);
    }
    i += together;
  }
}

}  // namespace morva
