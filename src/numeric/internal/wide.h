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

/// A tile of sums: of each row in turn, or of each group.
using Tile = std::array<double, rows_together * lanes>;
using FloatTile = std::array<float, rows_together * float_lanes>;

/// The sums over `columns` columns of the squares of the differences of each row and the points of
/// a group, or of one row and the points of several groups that follow each other; a group holds
/// `lanes` values for each column.
void square_differences(std::array<double const*, rows_together> const& rows, double const* group,
                        std::size_t columns, Tile& sums);
void square_differences(double const* row, double const* groups, std::size_t columns, Tile& sums);
/// The same with the products.
void products(double const* row, double const* groups, std::size_t columns, Tile& sums);

/// The products of floats, where the value of row r at a column is `rows[column * stride + r]`.
void products(float const* rows, std::size_t stride, float const* group, std::size_t columns,
              FloatTile& sums);

/// Adds a value to all.
void add_to_all(double value, std::span<double> out);
/// Each becomes its square root.
void take_roots(std::span<double> out);

}  // namespace morva::wide
