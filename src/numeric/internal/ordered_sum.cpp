#include "numeric/internal/ordered_sum.h"

#include <array>
#include <cstddef>
#include <numeric>

namespace morva {

namespace {

constexpr std::size_t lanes = 8;
// Far from where halves of units underflow.
constexpr double least_sum = 0x1p-400;

struct Rounded {
  double sum = 0.0;
  bool has_ties = false;
};

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
Rounded
add_rounded(std::span<double const> numbers, double start, double half_unit) {
  std::array<double, lanes> sums{};
  std::array<double, lanes> farthest{};
  for (std::size_t i = 0; i + lanes <= numbers.size(); i += lanes) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      double const number = numbers[i + lane];
      double const rounded = (number + start) - start;
      double const off = std::abs(number - rounded);
      sums[lane] += rounded;
      farthest[lane] = off > farthest[lane] ? off : farthest[lane];
    }
  }
  Rounded result;
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    result.sum += sums[lane];
    result.has_ties = result.has_ties || farthest[lane] >= half_unit;
  }
  for (std::size_t i = numbers.size() / lanes * lanes; i < numbers.size(); ++i) {
    double const rounded = (numbers[i] + start) - start;
    result.sum += rounded;
    result.has_ties = result.has_ties || std::abs(numbers[i] - rounded) >= half_unit;
  }
  return result;
}

}  // namespace

RowSum sum_rounded(std::span<double const> numbers, int binade) {
  SumRounding const rounding(binade);
  Rounded const rounded = add_rounded(numbers, rounding.start(), rounding.half_unit());
  return {rounded.sum, binade, !rounded.has_ties};
}

std::optional<int> binade_of(double sum) {
  if (!(sum >= least_sum) || std::isinf(sum)) {
    return {};
  }
  return std::ilogb(sum);
}

void OrderedSum::add(std::span<double const> numbers) {
  value_ = std::accumulate(numbers.begin(), numbers.end(), value_);
}

bool OrderedSum::add(RowSum const& part) {
  if (!part.is_certain || binade() != part.binade) {
    return false;
  }
  // No number is negative: where the last sum is in the binade, all before it are.
  double const sum = value_ + part.sum;
  if (!(sum < std::ldexp(1.0, part.binade + 1))) {
    return false;
  }
  value_ = sum;
  return true;
}

}  // namespace morva
