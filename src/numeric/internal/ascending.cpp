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

}  // namespace

bool comes_before(double a, double b) {
  return order_key(a) < order_key(b);
}

void sort_ascending(std::span<double> values) {
  std::sort(values.begin(), values.end(),
            [](double a, double b) { return order_key(a) < order_key(b); });
}

void keep_smallest(std::size_t count, std::vector<double>& values) {
  if (count < values.size()) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count),
                     values.end(), [](double a, double b) { return order_key(a) < order_key(b); });
    values.resize(count);
  }
  sort_ascending(values);
}

}  // namespace morva
