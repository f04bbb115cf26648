#include "numeric/internal/ascending.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace morva {

namespace {

// The bits of a double as an integer of the same order: those of a negative number descend.
std::int64_t order_key(double x) {
  if (std::isnan(x)) {
    return std::numeric_limits<std::int64_t>::max();
  }
  auto const bits = std::bit_cast<std::int64_t>(x);
  return bits < 0 ? bits ^ std::numeric_limits<std::int64_t>::max() : bits;
}

// As an object, so that it is inlined where values are sorted.
constexpr auto precedes = [](double a, double b) { return order_key(a) < order_key(b); };

}  // namespace

bool comes_before(double a, double b) {
  return precedes(a, b);
}

std::uint64_t ascending_key(double x) {
  // Without a sign, the negative ones come first.
  return static_cast<std::uint64_t>(order_key(x)) ^ (std::uint64_t{1} << 63);
}

void sort_ascending(std::span<double> values) {
  std::sort(values.begin(), values.end(), precedes);
}

double select(std::span<double> values, std::size_t position) {
  auto const place = values.begin() + static_cast<std::ptrdiff_t>(position);
  std::nth_element(values.begin(), place, values.end(), precedes);
  return *place;
}

std::vector<double> smallest(std::size_t count, std::vector<double> values) {
  if (count >= values.size()) {
    sort_ascending(values);
    return values;
  }
  auto const end = values.begin() + static_cast<std::ptrdiff_t>(count);
  std::nth_element(values.begin(), end, values.end(), precedes);
  std::sort(values.begin(), end, precedes);
  // A copy of its own size: callers keep many of these.
  return {values.begin(), end};
}

}  // namespace morva
