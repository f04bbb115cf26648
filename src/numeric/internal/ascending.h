#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morva {

/// Whether a stands before b in ascending order, with -0.0 before 0.0 and NaN last: one order for
/// every machine.
bool comes_before(double a, double b);

/// Two values stand in ascending order as their keys do.
std::uint64_t ascending_key(double x);

void sort_ascending(std::span<double> values);

/// The value at a position of the ascending order; reorders the values.
double select(std::span<double> values, std::size_t position);

/// The `count` first values of the ascending order, sorted; all where there are no more.
std::vector<double> smallest(std::size_t count, std::vector<double> values);

}  // namespace morva
