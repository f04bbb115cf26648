#pragma once

#include <cmath>
#include <optional>
#include <span>

namespace morva {

/// How a sum between a power of two and the next one rounds what is added to it: to a multiple of
/// the unit of its last bit. Between two multiples the last bit of the sum decides.
class SumRounding {
 public:
  /// Of sums from 2^`binade` to below its double.
  explicit SumRounding(int binade)
      : start_(std::ldexp(1.0, binade)), half_unit_(std::ldexp(1.0, binade - 53)) {}

  double start() const { return start_; }
  double half_unit() const { return half_unit_; }
  /// Of a number from 0 up to `start()`, to the even multiple where it lies between two.
  double operator()(double number) const { return (number + start_) - start_; }
  bool is_between(double number) const { return std::abs(number - (*this)(number)) == half_unit_; }

 private:
  double start_;
  double half_unit_;
};

/// What some numbers add to a sum that stays within a binade: their multiples of the unit, which
/// add up without rounding, in any order.
struct RowSum {
  double sum = 0.0;
  int binade = 0;
  /// No number lies between two multiples, and nothing else is left open.
  bool is_certain = false;
};

/// `numbers`, none of them below 0.0, as an addend to sums of that binade.
RowSum sum_rounded(std::span<double const> numbers, int binade);

/// The binade of a sum that numbers can be added to together; nothing for 0.0, the smallest sums,
/// and one that is not finite.
std::optional<int> binade_of(double sum);

/// A sum of numbers that are not below 0.0, each addition rounded: the same bits whether they are
/// added one by one or many at once.
class OrderedSum {
 public:
  double value() const { return value_; }
  std::optional<int> binade() const { return binade_of(value_); }
  /// Adds numbers one by one.
  void add(std::span<double const> numbers);
  /// Adds the numbers of `part` together; false, with nothing added, where one by one they could
  /// make another sum.
  bool add(RowSum const& part);

 private:
  double value_ = 0.0;
};

}  // namespace morva
