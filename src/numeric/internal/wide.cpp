#include "numeric/internal/wide.h"

#include <cmath>
#include <cstring>

// On x86-64 each loop is compiled for several widths, of which the loader picks one; not under the
// sanitizers, which start up after the loader has picked.

namespace morva::wide {

namespace {

using Doubles [[gnu::vector_size(64)]] = double;
using Floats [[gnu::vector_size(64)]] = float;

static_assert(sizeof(Doubles) == lanes * sizeof(double));
constexpr std::size_t width = sizeof(Floats) / sizeof(float);
static_assert(float_lanes == 2 * width);

// The sums stay in registers over all columns; `term(total, a, column)` adds one column to one of
// them.
template <typename Term>
[[gnu::always_inline]] inline void sum_of_rows(std::array<double const*, rows_together> const& rows,
                                               double const* group, std::size_t columns, Tile& sums,
                                               Term const& term) {
  std::array<Doubles, rows_together> total{};
  for (std::size_t c = 0; c < columns; ++c) {
    Doubles column;
    std::memcpy(&column, group + c * lanes, sizeof column);
    for (std::size_t r = 0; r < rows_together; ++r) {
      term(total[r], rows[r][c], column);
    }
  }
  std::memcpy(sums.data(), total.data(), sizeof total);
}

template <typename Term>
[[gnu::always_inline]] inline void sum_of_groups(double const* row, double const* groups,
                                                 std::size_t columns, Tile& sums,
                                                 Term const& term) {
  std::array<Doubles, groups_together> total{};
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t g = 0; g < groups_together; ++g) {
      Doubles column;
      std::memcpy(&column, groups + (g * columns + c) * lanes, sizeof column);
      term(total[g], row[c], column);
    }
  }
  std::memcpy(sums.data(), total.data(), sizeof total);
}

constexpr auto add_square = [](Doubles& total, double a, Doubles const& column) {
  Doubles const difference = a - column;
  total += difference * difference;
};
constexpr auto add_product = [](Doubles& total, double a, Doubles const& column) {
  total += a * column;
};

}  // namespace

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void square_differences(std::array<double const*, rows_together> const& rows, double const* group,
                        std::size_t columns, Tile& sums) {
  sum_of_rows(rows, group, columns, sums, add_square);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void square_differences(double const* row, double const* groups, std::size_t columns, Tile& sums) {
  sum_of_groups(row, groups, columns, sums, add_square);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void products(double const* row, double const* groups, std::size_t columns, Tile& sums) {
  sum_of_groups(row, groups, columns, sums, add_product);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void products(float const* rows, std::size_t stride, float const* group, std::size_t columns,
              FloatTile& sums) {
  std::array<Floats, rows_together> low{};
  std::array<Floats, rows_together> high{};
  for (std::size_t c = 0; c < columns; ++c) {
    Floats low_column;
    Floats high_column;
    std::memcpy(&low_column, group + c * float_lanes, sizeof low_column);
    std::memcpy(&high_column, group + c * float_lanes + width, sizeof high_column);
    for (std::size_t r = 0; r < rows_together; ++r) {
      low[r] += rows[c * stride + r] * low_column;
      high[r] += rows[c * stride + r] * high_column;
    }
  }
  for (std::size_t r = 0; r < rows_together; ++r) {
    std::memcpy(sums.data() + r * float_lanes, &low[r], sizeof low[r]);
    std::memcpy(sums.data() + r * float_lanes + width, &high[r], sizeof high[r]);
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void add_to_all(double value, std::span<double> out) {
  for (double& sum : out) {
    sum += value;
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void take_roots(std::span<double> out) {
  for (double& sum : out) {
    sum = std::sqrt(sum);
  }
}

}  // namespace morva::wide
