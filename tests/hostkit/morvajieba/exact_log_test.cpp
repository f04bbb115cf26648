#include "morvajieba/exact_log.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

using morvajieba::exact_log;

/// Values of all sizes, dense among those that are word frequencies.
template <typename Check>
void for_many_values(Check check) {
  for (int value = 1; value <= 100'000; ++value) check(static_cast<double>(value));
  std::mt19937_64 random(3);
  for (int i = 0; i < 100'000; ++i) {
    check(static_cast<double>(random() >> (random() % 64)) + 1.0);
    double const any = std::bit_cast<double>(random() >> 1);
    if (std::isfinite(any) && any > 0) check(any);
  }
}

TEST(ExactLog, is_within_one_unit_in_the_last_place_of_the_math_library) {
  int too_far = 0;
  for_many_values([&](double value) {
    double const expected = std::log(value);
    double const got = exact_log(value);
    bool const is_near = got == expected || got == std::nextafter(expected, HUGE_VAL) ||
                         got == std::nextafter(expected, -HUGE_VAL);
    if (!is_near) ++too_far;
  });
  EXPECT_EQ(too_far, 0);
}

TEST(ExactLog, is_the_nearest_double_where_long_double_can_tell) {
  if (std::numeric_limits<long double>::digits < 64) GTEST_SKIP() << "no wider type";
  int wrong = 0;
  for_many_values([&](double value) {
    long double const wider = std::log(static_cast<long double>(value));
    auto const nearest = static_cast<double>(wider);
    // Where the wider result lies within its own error of the middle of two doubles, it cannot
    // tell.
    long double const error = 4 * std::numeric_limits<long double>::epsilon() * std::fabs(wider);
    bool const can_tell = static_cast<double>(wider - error) == nearest &&
                          static_cast<double>(wider + error) == nearest;
    if (can_tell && exact_log(value) != nearest) ++wrong;
  });
  EXPECT_EQ(wrong, 0);
}

TEST(ExactLog, of_one_is_zero) {
  EXPECT_EQ(exact_log(1.0), 0.0);
}

TEST(ExactLog, of_zero_is_minus_infinity) {
  EXPECT_EQ(exact_log(0.0), -std::numeric_limits<double>::infinity());
}

TEST(ExactLog, of_a_negative_number_is_no_number) {
  EXPECT_TRUE(std::isnan(exact_log(-1.0)));
}

TEST(ExactLog, has_these_bits_on_every_platform) {
  EXPECT_EQ(exact_log(60101967.0), 0x1.1e95b8bb84672p+4);
  EXPECT_EQ(exact_log(3.0), 0x1.193ea7aad030bp+0);
}

}  // namespace
