#include "numeric/internal/divided_search.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <utility>

#include "numeric/internal/distance_sum.h"
#include "numeric/internal/division.h"
#include "numeric/internal/told_neighbours.h"

namespace morva::divided {

namespace {

// Neighbours are told in so many turns, so that few of them are held twice, or, of few points, in
// turns of so many rows.
constexpr std::size_t most_turns = 32;
constexpr std::size_t rows_in_turn = 256;

// Points as numbers, one behind the other.
void write(SparsePoint const& point, std::vector<std::uint64_t>& out) {
  out.push_back(static_cast<std::uint64_t>(point.n));
  out.push_back(point.values.size());
  out.insert(out.end(), point.columns.begin(), point.columns.end());
  for (double const value : point.values) {
    out.push_back(std::bit_cast<std::uint64_t>(value));
  }
}

// The first of them, which is of dimension n or has no coordinates.
SparsePoint read(std::span<std::uint64_t const>& from, long long n) {
  Division::expect_same(from.size() >= 2 && from[1] <= (from.size() - 2) / 2);
  std::size_t const count = from[1];
  auto const places = from.subspan(2, count);
  auto const own_n = static_cast<long long>(from[0]);
  bool const is_ascending =
      std::adjacent_find(places.begin(), places.end(), std::greater_equal<>()) == places.end();
  Division::expect_same((own_n == n || own_n == 0) && is_ascending &&
                        (count == 0 || places.back() < static_cast<std::uint64_t>(own_n)));
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  columns.reserve(count);
  values.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    columns.push_back(static_cast<std::uint32_t>(places[i]));
    values.push_back(std::bit_cast<double>(from[2 + count + i]));
  }
  from = from.subspan(2 + 2 * count);
  return {own_n, std::move(columns), std::move(values)};
}

std::size_t value_count(DistanceTable const& table, std::vector<int> const& members) {
  std::size_t sum = 0;
  for (int const member : members) {
    sum += table[static_cast<std::size_t>(member)].values.size();
  }
  return sum;
}

// For each cluster the process that makes its point: the largest first, each to the one that has
// least to do so far. Empty where making them takes no longer than telling them.
std::vector<std::size_t> deal(std::vector<std::size_t> const& sizes, std::size_t columns,
                              std::size_t processes) {
  // A value of a point takes about so many times as long to send as one of a member to add.
  constexpr std::size_t price_of_telling = 4;
  std::size_t making = 0;
  std::size_t telling = 0;
  for (std::size_t const size : sizes) {
    making += size;
    telling += price_of_telling * std::min(size, columns);
  }
  if (making <= telling) {
    return {};
  }
  std::vector<std::size_t> order(sizes.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&sizes](std::size_t a, std::size_t b) { return sizes[a] > sizes[b]; });
  std::vector<std::size_t> work(processes);
  std::vector<std::size_t> maker(sizes.size());
  for (std::size_t const cluster : order) {
    auto const least = std::min_element(work.begin(), work.end());
    maker[cluster] = static_cast<std::size_t>(least - work.begin());
    *least += sizes[cluster];
  }
  return maker;
}

}  // namespace

std::optional<FoundPair> farthest_pair(DistanceTable const& table) {
  Division const division(table);
  auto const found = morva::farthest_pair(table, division.rows(table.size()));
  std::optional<FoundPair> result;
  for (FoundPair const& pair :
       division.join(found ? std::vector<FoundPair>{*found} : std::vector<FoundPair>())) {
    Division::expect_same(pair.i < pair.j && pair.j < table.size());
    result = is_farther(pair, result) ? pair : result;
  }
  return result;
}

double average_distance(DistanceTable const& table) {
  Division const division(table);
  std::size_t const size = table.size();
  if (division.is_alone() || size < 2) {
    return morva::average_distance(table);
  }
  DistanceSum sum(table);
  Rows const rows = division.rows(size, Division::Shape::triangle);
  std::vector<RowSum> const known = division.join(sum.row_sums(rows), size);
  std::size_t const pairs = size * (size - 1) / 2;
  return sum.total(known) / static_cast<double>(pairs);
}

void for_each_neighbourhood(DistanceTable const& table, double limit, DistanceTable::Border border,
                            VisitNeighbours const& visit) {
  Division const division(table);
  if (division.is_alone()) {
    morva::for_each_neighbourhood(table, limit, border, visit);
    return;
  }
  std::size_t const size = table.size();
  std::size_t const turns = std::clamp<std::size_t>(size / rows_in_turn, 1, most_turns);
  ToldNeighbours told(size);
  for (std::size_t turn = 0; turn < turns; ++turn) {
    auto const rows_of = [&](std::size_t process) {
      return division.rows_of(process, size, Division::Shape::triangle, {turn, turns});
    };
    std::vector<std::uint32_t> mine;
    morva::for_each_neighbourhood(
        table, limit, border,
        [&](std::size_t i, std::span<std::uint32_t const> near) { told.tell(i, near, mine); },
        rows_of(division.rank()));
    auto const all = division.gather(std::move(mine));
    for (std::size_t process = 0; process < all.size(); ++process) {
      std::span<std::uint32_t const> rest = all[process];
      Rows const rows = rows_of(process);
      for (std::size_t i = rows.begin; i < rows.end; ++i) {
        visit(i, told.hear(i, rest));
      }
      Division::expect_same(rest.empty());
    }
  }
}

std::vector<std::size_t> find_nearest(DistanceTable const& means, DistanceTable const& points,
                                      std::size_t count, NearestMeans& search) {
  Division const division(points);
  Rows const rows = division.rows(count);
  std::vector<std::size_t> nearest(rows.size());
  search.find(means, rows, nearest);
  nearest = division.join(std::move(nearest), count);
  Division::expect_same(std::all_of(nearest.begin(), nearest.end(), [&means](std::size_t mean) {
    return mean == 0 || mean < means.size();
  }));
  return nearest;
}

std::vector<SparsePoint> make_points(DistanceTable const& table,
                                     std::vector<std::vector<int> const*> const& clusters,
                                     MakePoint const& make) {
  Division const division(table);
  std::vector<std::size_t> maker;
  if (!division.is_alone()) {
    std::vector<std::size_t> sizes;
    sizes.reserve(clusters.size());
    for (std::vector<int> const* members : clusters) {
      sizes.push_back(value_count(table, *members));
    }
    maker = deal(sizes, column_count(table.points()), division.size());
  }
  std::vector<SparsePoint> points(clusters.size());
  std::vector<std::uint64_t> mine;
  for (std::size_t i = 0; i < clusters.size(); ++i) {
    if (maker.empty()) {
      points[i] = make(*clusters[i]);
    } else if (maker[i] == division.rank()) {
      write(make(*clusters[i]), mine);
    }
  }
  if (maker.empty()) {
    return points;
  }
  auto const all = division.gather(std::move(mine));
  std::vector<std::span<std::uint64_t const>> rest(all.begin(), all.end());
  for (std::size_t i = 0; i < clusters.size(); ++i) {
    points[i] = read(rest[maker[i]], table[0].n);
  }
  Division::expect_same(
      std::all_of(rest.begin(), rest.end(), [](auto const& left) { return left.empty(); }));
  return points;
}

DistanceSums::DistanceSums(DistanceTable const& table)
    : table_(table),
      own_(table.own_points()),
      sums_(own_.size()),
      is_candidate_(own_.size(), 1),
      row_(own_.size()) {}

void DistanceSums::add(std::size_t seed) {
  Division const division(table_);
  if (seed % division.size() == division.rank()) {
    is_candidate_[seed / division.size()] = 0;
  }
  own_.distances(table_[seed], 0, row_);
  std::transform(sums_.begin(), sums_.end(), row_.begin(), sums_.begin(), std::plus<>());
}

std::optional<std::size_t> DistanceSums::farthest() const {
  struct Candidate {
    double sum;
    std::size_t index;
  };
  Division const division(table_);
  std::vector<Candidate> mine;
  for (std::size_t place = 0; place < sums_.size(); ++place) {
    if (is_candidate_[place] != 0 && sums_[place] > (mine.empty() ? 0.0 : mine.front().sum)) {
      mine.assign(1, {sums_[place], place * division.size() + division.rank()});
    }
  }
  std::optional<Candidate> best;
  for (Candidate const& one : division.join(mine)) {
    Division::expect_same(one.index < table_.size());
    if (!best || one.sum > best->sum || (one.sum == best->sum && one.index < best->index)) {
      best = one;
    }
  }
  return best ? std::optional(best->index) : std::nullopt;
}

}  // namespace morva::divided
