#include "morvajieba/exact_log.h"

#include <cmath>
#include <limits>

namespace morvajieba {

namespace {

/// An unevaluated sum of two doubles, about 106 bits of precision.
struct Pair {
  double high;
  double low;
};

Pair quick_sum(double larger, double smaller) {
  double const sum = larger + smaller;
  return {sum, smaller - (sum - larger)};
}

Pair exact_sum(double left, double right) {
  double const sum = left + right;
  double const part = sum - left;
  return {sum, (left - (sum - part)) + (right - part)};
}

/// Splits the 53 bits in halves whose products are exact. No fused multiply-add, which not every
/// machine has in hardware.
Pair split(double value) {
  double const scaled = value * 134217729.0;  // 2^27 + 1
  double const high = scaled - (scaled - value);
  return {high, value - high};
}

Pair exact_product(double left, double right) {
  double const product = left * right;
  Pair const a = split(left);
  Pair const b = split(right);
  double const error =
      ((a.high * b.high - product) + a.high * b.low + a.low * b.high) + a.low * b.low;
  return {product, error};
}

Pair operator+(Pair left, Pair right) {
  Pair const high = exact_sum(left.high, right.high);
  Pair const low = exact_sum(left.low, right.low);
  Pair const sum = quick_sum(high.high, high.low + low.high);
  return quick_sum(sum.high, sum.low + low.low);
}

Pair operator*(Pair left, Pair right) {
  Pair const product = exact_product(left.high, right.high);
  return quick_sum(product.high, product.low + (left.high * right.low + left.low * right.high));
}

Pair operator/(Pair left, Pair right) {
  double const first = left.high / right.high;
  Pair const rest = left + Pair{-first, 0.0} * right;
  double const second = rest.high / right.high;
  Pair const last = rest + Pair{-second, 0.0} * right;
  return quick_sum(first, second) + Pair{last.high / right.high, 0.0};
}

constexpr Pair ln_2{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};
constexpr double sqrt_half = 0x1.6a09e667f3bcdp-1;

/// 2 * atanh(s) by its series; |s| <= 0.172, so that 24 terms leave less than 2^-120.
Pair twice_atanh(Pair s) {
  Pair const square = s * s;
  Pair sum{0.0, 0.0};
  for (int term = 47; term >= 1; term -= 2) {
    sum = sum * square + Pair{1.0, 0.0} / Pair{static_cast<double>(term), 0.0};
  }
  Pair const half = sum * s;
  return {2.0 * half.high, 2.0 * half.low};
}

}  // namespace

double exact_log(double value) {
  if (value == 0.0) return -std::numeric_limits<double>::infinity();
  if (value < 0.0) return std::numeric_limits<double>::quiet_NaN();
  if (!std::isfinite(value)) return value;
  int exponent = 0;
  double mantissa = std::frexp(value, &exponent);
  if (mantissa < sqrt_half) {
    mantissa *= 2.0;
    --exponent;
  }
  // log(m) = 2 atanh((m - 1) / (m + 1)), and m - 1 is exact.
  Pair const s = Pair{mantissa - 1.0, 0.0} / exact_sum(mantissa, 1.0);
  Pair const result = Pair{static_cast<double>(exponent), 0.0} * ln_2 + twice_atanh(s);
  return result.high + result.low;
}

}  // namespace morvajieba
