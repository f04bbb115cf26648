#include "numeric/internal/distance_sum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "numeric/internal/spread_point.h"

namespace morva {

namespace {

constexpr std::size_t tile_size = PairProducts::tile;
// Rows that share the way of the points through the cache; fewer around a border of binades, where
// what is computed ahead is lost.
constexpr std::size_t least_rows = 4;
constexpr std::size_t most_rows = 256;
// Fewer points leave so much of a tile empty that measuring them all is cheaper.
constexpr std::size_t least_bounded = tile_size / 2;
constexpr std::size_t most_samples = std::size_t{1} << 16U;

constexpr double greatest = std::numeric_limits<double>::max();
constexpr std::size_t width = 8;

// The squares of the distances of a point and those of a tile: |x|^2 + |y|^2 - 2xy, off by less
// than `slack` times |x|^2 + |y|^2, as `SquareBounds` has it.
struct Squares {
  double square_sum;
  double slack;
  double const* square_sums;
  double const* products;
};

// Sums the multiples of the roots. `open[k]` becomes 1.0, and nothing is added, where the bounds of
// the square are not both within the borders of one multiple; else 0.0.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
double
add_certain(Squares const& squares, double start, double half_unit, double* open) {
  std::array<double, tile_size> roots;
  double const* const sums = squares.square_sums;
  double const* const products = squares.products;
  double const own = squares.square_sum;
  double const slack = squares.slack;
  for (std::size_t k = 0; k < tile_size; ++k) {
    double const square = own + sums[k] - 2.0 * products[k];
    roots[k] = square > 0.0 ? square : 0.0;
  }
  for (double& root : roots) {
    root = std::sqrt(root);
  }
  for (std::size_t k = 0; k < tile_size; ++k) {
    double const both = own + sums[k];
    double const square = both - 2.0 * products[k];
    double const multiple = (roots[k] + start) - start;
    double const above = multiple + half_unit;
    double const below = multiple - half_unit;
    double const border = below > 0.0 ? below * below : -greatest;
    double const room_above = above * above - (square + slack * both);
    double const room_below = (square - slack * both) - border;
    double const room = room_above < room_below ? room_above : room_below;
    roots[k] = room > 0.0 ? multiple : 0.0;
    open[k] = room > 0.0 ? 0.0 : 1.0;
  }
  std::array<double, width> total{};
  for (std::size_t k = 0; k < tile_size; k += width) {
    for (std::size_t lane = 0; lane < width; ++lane) {
      total[lane] += roots[k + lane];
    }
  }
  return std::accumulate(total.begin(), total.end(), 0.0);
}

}  // namespace

DistanceSum::DistanceSum(DistanceTable const& table) : table_(table), open_(tile_size) {
  if (!table.has_sparse_bounds() || table.size() < least_bounded) {
    return;
  }
  products_.emplace(table.points());
  for (SparsePoint const& point : table.points()) {
    square_sums_.push_back(point.square_sum);
    roundings_.push_back(SquareBounds::Part(point).roundings);
  }
}

DistanceSum::Tile DistanceSum::tile_at(std::size_t first) const {
  std::size_t const count = std::min(tile_size, table_.size() - first);
  auto const begin = roundings_.begin() + static_cast<std::ptrdiff_t>(first);
  return {first, count, *std::max_element(begin, begin + static_cast<std::ptrdiff_t>(count))};
}

DistanceSum::Part DistanceSum::bound_part(std::size_t i, Tile const& tile,
                                          std::span<double const> products, int binade) {
  Part part{{0.0, binade, true}};
  std::size_t const from = i < tile.first ? 0 : i + 1 - tile.first;
  if (from >= tile.count) {
    return part;
  }
  double const own = square_sums_[i];
  Squares squares{own, (roundings_[i] + tile.roundings) * std::numeric_limits<double>::epsilon(),
                  square_sums_.data() + tile.first, products.data()};
  std::array<double, tile_size> own_sums;
  std::array<double, tile_size> own_products;
  if (from > 0 || tile.count < tile_size) {
    // The others are put where the point is.
    own_sums.fill(-own);
    own_products.fill(0.0);
    std::copy(squares.square_sums + from, squares.square_sums + tile.count, own_sums.data() + from);
    std::copy(squares.products + from, squares.products + tile.count, own_products.data() + from);
    squares.square_sums = own_sums.data();
    squares.products = own_products.data();
  }
  SumRounding const rounding(binade);
  part.sum.sum = add_certain(squares, rounding.start(), rounding.half_unit(), open_.data());
  measure_open(i, tile.first, rounding, part);
  return part;
}

void DistanceSum::measure_open(std::size_t i, std::size_t first, SumRounding const& rounding,
                               Part& part) {
  constexpr std::size_t step = 8;
  for (std::size_t begin = 0; begin < tile_size; begin += step) {
    double any = 0.0;
    for (std::size_t k = begin; k < begin + step; ++k) {
      any += open_[k];
    }
    for (std::size_t k = begin; any != 0.0 && k < begin + step; ++k) {
      if (open_[k] != 0.0) {
        double const measured = distance(table_[i], table_[first + k]);
        part.sum.sum += rounding(measured);
        part.sum.is_certain = part.sum.is_certain && !rounding.is_between(measured);
        ++part.open;
      }
    }
  }
}

// False, with the sums of no use, where so much is open that measuring all together is cheaper.
bool DistanceSum::bound_rows(Rows rows, std::span<RowSum> sums) {
  std::size_t pairs = 0;
  std::size_t open = 0;
  products_->take(rows);
  for (std::size_t first = rows.begin / tile_size * tile_size; first < table_.size();
       first += tile_size) {
    Tile const tile = tile_at(first);
    products_->move_to(first);
    for (std::size_t i = rows.begin; i < rows.end; ++i) {
      RowSum& sum = sums[i - rows.begin];
      Part const part = bound_part(i, tile, products_->of_row(i - rows.begin), sum.binade);
      sum.sum += part.sum.sum;
      sum.is_certain = sum.is_certain && part.sum.is_certain;
      open += part.open;
    }
    pairs += rows.size() * tile.count;
    if (open > pairs / 8) {
      return false;
    }
  }
  return true;
}

void DistanceSum::add_by_tiles(std::size_t i, OrderedSum& sum) {
  SpreadPoint row(column_count(table_.points()));
  row.become(table_[i]);
  std::vector<double> products(tile_size);
  std::vector<double> measured;
  for (std::size_t first = i; first < table_.size(); first += tile_size) {
    Tile const tile = tile_at(first);
    for (std::size_t k = 0; k < tile.count; ++k) {
      products[k] = row.dot(table_[first + k]);
    }
    auto const binade = sum.binade();
    if (binade && sum.add(bound_part(i, tile, products, *binade).sum)) {
      continue;
    }
    measured.clear();
    for (std::size_t j = std::max(first, i + 1); j < first + tile.count; ++j) {
      measured.push_back(distance(table_[i], table_[j]));
    }
    sum.add(measured);
  }
}

// Adds some rows, at least the first of them, and returns the next row.
std::size_t DistanceSum::add_rows(Rows rows, OrderedSum& sum) {
  auto const binade = sum.binade();
  if (products_ && rows.begin == 0) {
    add_by_tiles(0, sum);
    return 1;
  }
  std::vector<RowSum> sums(rows.size(), RowSum{0.0, binade.value_or(0), true});
  if (!products_ || !binade || !bound_rows(rows, sums)) {
    table_.for_each_row(rows, [&sum](std::size_t /*i*/, std::span<double const> distances) {
      auto const present = sum.binade();
      if (!present || !sum.add(sum_rounded(distances, *present))) {
        sum.add(distances);
      }
    });
    return rows.end;
  }
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    if (!sum.add(sums[i - rows.begin])) {
      add_by_tiles(i, sum);
      return i + 1;
    }
  }
  return rows.end;
}

double DistanceSum::total(std::span<RowSum const> known) {
  OrderedSum sum;
  std::size_t together = least_rows;
  for (std::size_t i = 0; i < table_.size();) {
    if (i < known.size() && sum.add(known[i])) {
      together = least_rows;
      ++i;
      continue;
    }
    Rows const rows{i, std::min(i + together, table_.size())};
    i = add_rows(rows, sum);
    together = i == rows.end ? std::min(2 * together, most_rows) : least_rows;
  }
  return sum.value();
}

// The sums before each row as a sample of the pairs has them.
std::vector<double> DistanceSum::predicted_sums() const {
  std::size_t const size = table_.size();
  std::size_t const pairs = size * (size - 1) / 2;
  std::size_t const stride = std::max(std::size_t{16}, pairs / most_samples);
  std::vector<double> result;
  double sum = 0.0;
  std::size_t sample = stride / 2;
  std::size_t before = 0;
  for (std::size_t i = 0; i < size; ++i) {
    result.push_back(sum);
    std::size_t const end = before + (size - 1 - i);
    for (; sample < end; sample += stride) {
      double const measured = distance(table_[i], table_[i + 1 + (sample - before)]);
      sum += measured * static_cast<double>(stride);
    }
    before = end;
  }
  return result;
}

std::vector<RowSum> DistanceSum::row_sums(Rows rows) {
  std::vector<double> const predicted = predicted_sums();
  std::vector<RowSum> result;
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    result.push_back({0.0, binade_of(predicted[i]).value_or(0), true});
  }
  for (std::size_t begin = rows.begin; begin < rows.end; begin += most_rows) {
    Rows const block{begin, std::min(begin + most_rows, rows.end)};
    auto const sums = std::span(result).subspan(begin - rows.begin, block.size());
    if (!products_ || !bound_rows(block, sums)) {
      table_.for_each_row(block, [&](std::size_t i, std::span<double const> distances) {
        RowSum& sum = sums[i - begin];
        sum = sum_rounded(distances, sum.binade);
      });
    }
  }
  return result;
}

}  // namespace morva
