#pragma once

#include <cstddef>
#include <span>

namespace morva::wide {

/// Loops over doubles side by side, in the widest registers that the machine at hand has. Each lane
/// is a sum of its own in its own order, so the width changes no bit.

/// Lanes of a group of interleaved points.
inline constexpr std::size_t lanes = 16;

/// Adds to each of the sums of a group the squares of the differences from `x`, column by column;
/// `group` holds `lanes` values for each of its columns.
void add_square_differences(std::span<double const> x, double const* group, double* sums);
/// The same with the products.
void add_products(std::span<double const> x, double const* group, double* sums);
/// Adds a value to all.
void add_to_all(double value, std::span<double> out);

}  // namespace morva::wide
