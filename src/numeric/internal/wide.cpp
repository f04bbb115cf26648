#include "numeric/internal/wide.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

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
                                               Column const* group, std::size_t columns, Tile& sums,
                                               Term const& term) {
  std::array<Doubles, rows_together> total{};
  for (std::size_t c = 0; c < columns; ++c) {
    Doubles column;
    std::memcpy(&column, group[c].values.data(), sizeof column);
    for (std::size_t r = 0; r < rows_together; ++r) {
      term(total[r], rows[r][c], column);
    }
  }
  std::memcpy(sums.data(), total.data(), sizeof total);
}

template <typename Term>
[[gnu::always_inline]] inline void sum_of_groups(double const* row, Column const* groups,
                                                 std::size_t columns, Tile& sums,
                                                 Term const& term) {
  std::array<Doubles, groups_together> total{};
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t g = 0; g < groups_together; ++g) {
      Doubles column;
      std::memcpy(&column, groups[g * columns + c].values.data(), sizeof column);
      term(total[g], row[c], column);
    }
  }
  std::memcpy(sums.data(), total.data(), sizeof total);
}

// The sums of some groups of lanes, the first at `j` of each row, stay in registers over all rows.
template <std::size_t Groups>
[[gnu::always_inline]] inline void sum_of_some(std::span<double const> factors,
                                               std::span<double const* const> rows, std::size_t j,
                                               double* out) {
  std::array<Doubles, Groups> total{};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t g = 0; g < Groups; ++g) {
      Doubles row;
      std::memcpy(&row, rows[i] + j + g * lanes, sizeof row);
      total[g] += factors[i] * row;
    }
  }
  std::memcpy(out, total.data(), sizeof total);
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
void square_differences(std::array<double const*, rows_together> const& rows, Column const* group,
                        std::size_t columns, Tile& sums) {
  sum_of_rows(rows, group, columns, sums, add_square);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void square_differences(double const* row, Column const* groups, std::size_t columns, Tile& sums) {
  sum_of_groups(row, groups, columns, sums, add_square);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void products(double const* row, Column const* groups, std::size_t columns, Tile& sums) {
  sum_of_groups(row, groups, columns, sums, add_product);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void square_bounds(FloatRows const& rows, FloatRows const& group, std::size_t columns,
                   std::size_t stride, float* low, float* high) {
  std::array<Floats, rows_together> first{};
  std::array<Floats, rows_together> second{};
  for (std::size_t c = 0; c < columns; ++c) {
    Floats first_column;
    Floats second_column;
    auto const& column = group.columns[c].values;
    std::memcpy(&first_column, column.data(), sizeof first_column);
    std::memcpy(&second_column, column.data() + width, sizeof second_column);
    float const* const x = rows.columns[c].values.data() + rows.lane;
    for (std::size_t r = 0; r < rows_together; ++r) {
      first[r] += x[r] * first_column;
      second[r] += x[r] * second_column;
    }
  }
  std::array<float, float_lanes> products;
  for (std::size_t r = 0; r < rows_together; ++r) {
    std::memcpy(products.data(), &first[r], sizeof first[r]);
    std::memcpy(products.data() + width, &second[r], sizeof second[r]);
    for (std::size_t j = 0; j < float_lanes; ++j) {
      low[r * stride + j] = rows.low[r] + group.low[j] - 2.0F * products[j];
      high[r * stride + j] = rows.high[r] + group.high[j] - 2.0F * products[j];
    }
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
float greatest(std::span<float const> values) {
  std::array<float, width> result;
  result.fill(-std::numeric_limits<float>::infinity());
  std::size_t const whole = values.size() / width * width;
  for (std::size_t i = 0; i < whole; i += width) {
    for (std::size_t lane = 0; lane < width; ++lane) {
      result[lane] = values[i + lane] > result[lane] ? values[i + lane] : result[lane];
    }
  }
  for (float const value : values.subspan(whole)) {
    result[0] = value > result[0] ? value : result[0];
  }
  return *std::max_element(result.begin(), result.end());
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
float least(std::span<float const> values) {
  std::array<float, width> result;
  result.fill(std::numeric_limits<float>::infinity());
  std::size_t const whole = values.size() / width * width;
  for (std::size_t i = 0; i < whole; i += width) {
    for (std::size_t lane = 0; lane < width; ++lane) {
      result[lane] = values[i + lane] < result[lane] ? values[i + lane] : result[lane];
    }
  }
  for (float const value : values.subspan(whole)) {
    result[0] = value < result[0] ? value : result[0];
  }
  return *std::min_element(result.begin(), result.end());
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
float greatest_below(float limit, std::span<float const> low, std::span<float const> high) {
  std::array<float, width> result;
  result.fill(-std::numeric_limits<float>::infinity());
  std::size_t const whole = low.size() / width * width;
  for (std::size_t i = 0; i < whole; i += width) {
    for (std::size_t lane = 0; lane < width; ++lane) {
      bool const counts = high[i + lane] < limit;
      float const value = counts ? low[i + lane] : -std::numeric_limits<float>::infinity();
      result[lane] = value > result[lane] ? value : result[lane];
    }
  }
  for (std::size_t i = whole; i < low.size(); ++i) {
    result[0] = high[i] < limit && low[i] > result[0] ? low[i] : result[0];
  }
  return *std::max_element(result.begin(), result.end());
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx2", "default")]]
#endif
void compare(std::span<float const> low, std::span<float const> high, float below, float above,
             std::span<char> out) {
  for (std::size_t j = 0; j < out.size(); ++j) {
    out[j] =
        static_cast<char>(static_cast<int>(low[j] <= above) + static_cast<int>(high[j] < below));
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void least_of_strands(std::span<float const> values, std::array<float, strands>& out) {
  out.fill(std::numeric_limits<float>::infinity());
  std::size_t const whole = values.size() / strands * strands;
  for (std::size_t i = 0; i < whole; i += strands) {
    for (std::size_t s = 0; s < strands; ++s) {
      out[s] = values[i + s] < out[s] ? values[i + s] : out[s];
    }
  }
  for (std::size_t i = whole; i < values.size(); ++i) {
    out[i - whole] = values[i] < out[i - whole] ? values[i] : out[i - whole];
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void sum_of_multiples(std::span<double const> factors, std::span<double const* const> rows,
                      std::span<double> out) {
  std::size_t j = 0;
  for (; j + groups_together * lanes <= out.size(); j += groups_together * lanes) {
    sum_of_some<groups_together>(factors, rows, j, out.data() + j);
  }
  for (; j < out.size(); j += lanes) {
    sum_of_some<1>(factors, rows, j, out.data() + j);
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
