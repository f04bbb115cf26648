#include "numeric/internal/all_pairs.h"

#include <utility>

#include "numeric/internal/distance_sum.h"
#include "numeric/internal/float_search.h"
#include "numeric/internal/inverted_search.h"
#include "numeric/internal/neighbourhoods.h"
#include "numeric/internal/no_distance.h"
#include "numeric/internal/norm_search.h"

namespace morva {

bool is_farther(FoundPair const& pair, std::optional<FoundPair> const& other) {
  double const known = other ? other->distance : 0.0;
  if (!other || pair.distance != known) {
    return pair.distance > known;
  }
  return std::pair(pair.i, pair.j) < std::pair(other->i, other->j);
}

double average_distance(DistanceTable const& table) {
  std::size_t const size = table.size();
  if (size < 2) {
    return 0.0;
  }
  std::size_t const pairs = size * (size - 1) / 2;
  return DistanceSum(table).total() / static_cast<double>(pairs);
}

std::optional<FoundPair> farthest_pair(DistanceTable const& table, Rows rows) {
  rows = rows.up_to(table.size());
  if (FloatLanes const* floats = table.floats()) {
    return FloatSearch(table, *floats).farthest_pair(rows);
  }
  if (table.has_sparse_bounds()) {
    return farthest_by_norms(table, rows);
  }
  std::optional<FoundPair> result;
  for (std::size_t i = rows.begin; i < rows.end && i + 1 < table.size(); ++i) {
    double const floor = result ? result->distance : 0.0;
    if (auto const found = table.farthest(table[i], i + 1, floor)) {
      result = FoundPair{i, found->index, found->distance};
    }
  }
  return result;
}

std::optional<FoundPair> closest_pair(DistanceTable const& table) {
  if (FloatLanes const* floats = table.floats()) {
    return FloatSearch(table, *floats).closest_pair();
  }
  if (InvertedIndex const* index = table.index()) {
    return InvertedSearch(table, *index).closest_pair({0, table.size()});
  }
  std::optional<FoundPair> result;
  for (std::size_t i = 0; i + 1 < table.size(); ++i) {
    double const ceiling = result ? result->distance : no_distance;
    if (auto const found = table.closest(table[i], i + 1, ceiling)) {
      result = FoundPair{i, found->index, found->distance};
    }
  }
  return result;
}

void for_each_neighbourhood(DistanceTable const& table, double limit, DistanceTable::Border border,
                            VisitNeighbours const& visit, Rows rows) {
  Neighbourhoods neighbourhoods(table, limit, border);
  rows = rows.up_to(table.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    visit(i, neighbourhoods.of(i));
  }
}

std::vector<std::vector<double>> smallest_distances(DistanceTable const& table, std::size_t count,
                                                    Rows rows) {
  rows = rows.up_to(table.size());
  if (FloatLanes const* floats = table.floats()) {
    return FloatSearch(table, *floats).smallest_distances(rows, count);
  }
  if (InvertedIndex const* index = table.index()) {
    return InvertedSearch(table, *index).smallest_distances(rows, count);
  }
  std::vector<std::vector<double>> result;
  result.reserve(rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    result.push_back(table.smallest_distances(i, count));
  }
  return result;
}

std::vector<double> greatest_within(DistanceTable const& table, double limit, Rows rows) {
  rows = rows.up_to(table.size());
  if (FloatLanes const* floats = table.floats(); floats != nullptr && limit >= 0.0) {
    return FloatSearch(table, *floats).greatest_within(rows, limit);
  }
  if (InvertedIndex const* index = table.index()) {
    return InvertedSearch(table, *index).greatest_within(rows, limit);
  }
  std::vector<double> result;
  result.reserve(rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    result.push_back(table.greatest_within(i, limit));
  }
  return result;
}

void find_nearest(DistanceTable const& table, DistanceTable const& points, Rows rows,
                  std::span<std::size_t> out) {
  FloatLanes const* floats = points.floats();
  if (floats != nullptr && table.size() != 0 && floats->can_scale(table.points())) {
    FloatLanes const own(table.points(), points[0].n, floats->scale());
    FloatSearch(table, own).nearest(points, *floats, rows, out);
    return;
  }
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    out[i - rows.begin] = table.nearest(points[i]);
  }
}

}  // namespace morva
