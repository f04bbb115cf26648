#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace morva::wide {

/// Loops over numbers side by side, in the widest registers that the machine at hand has. Each lane
/// is a sum of its own in its own order, so the width changes no bit.

/// Points of an interleaved group; that of floats serves bounds only.
inline constexpr std::size_t lanes = 8;
inline constexpr std::size_t float_lanes = 32;
/// Rows that are measured against a group together, and groups against a single row.
inline constexpr std::size_t rows_together = 4;
inline constexpr std::size_t groups_together = 4;

/// One column of a group, as long as a cache line or two.
struct alignas(64) Column {
  std::array<double, lanes> values{};
};
struct alignas(64) FloatColumn {
  std::array<float, float_lanes> values{};
};

/// Sums of each row in turn, or of each group.
using Tile = std::array<double, rows_together * lanes>;

/// The sums over `columns` columns of the squares of the differences of each row and the points of
/// a group, or of one row and the points of `groups_together` groups that follow each other.
void square_differences(std::array<double const*, rows_together> const& rows, Column const* group,
                        std::size_t columns, Tile& sums);
void square_differences(double const* row, Column const* groups, std::size_t columns, Tile& sums);
/// The same with the products.
void products(double const* row, Column const* groups, std::size_t columns, Tile& sums);

/// Points of a group of floats from one of them on, with bounds on the squares of their lengths.
struct FloatRows {
  FloatColumn const* columns;
  std::size_t lane;
  float const* low;
  float const* high;
};

/// For `rows_together` rows and the points of a whole group, |x|^2 + |y|^2 - 2xy from the low and
/// from the high bounds: to `low[r * stride + j]` and `high[r * stride + j]`.
void square_bounds(FloatRows const& rows, FloatRows const& group, std::size_t columns,
                   std::size_t stride, float* low, float* high);

/// The greatest and the smallest of all; minus infinity, and infinity, of none. No NaN.
float greatest(std::span<float const> values);
float least(std::span<float const> values);
/// The greatest of the low bounds whose high one is below the limit; minus infinity of none.
float greatest_below(float limit, std::span<float const> low, std::span<float const> high);
/// `out[j]` becomes the number of what holds of these: `low[j]` is not above `above`, and `high[j]`
/// is below `below`.
void compare(std::span<float const> low, std::span<float const> high, float below, float above,
             std::span<char> out);
/// The smallest of each of `strands` strands of values: strand s has the values s, s + strands, ...
inline constexpr std::size_t strands = 128;
void least_of_strands(std::span<float const> values, std::array<float, strands>& out);

/// `out[j]` becomes the sum of `factors[i] * rows[i][j]` in the order of the rows; a multiple of
/// `lanes` of them.
void sum_of_multiples(std::span<double const> factors, std::span<double const* const> rows,
                      std::span<double> out);
/// Adds a value to all.
void add_to_all(double value, std::span<double> out);
/// Each becomes its square root.
void take_roots(std::span<double> out);

}  // namespace morva::wide
