#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "host/HString.h"

namespace {

double read_back(double value) {
  return HString(value).to_double();
}

TEST(HStringNumber, integers_are_written_in_decimal) {
  EXPECT_EQ(HString(-7, false), HString(L"-7"));
  EXPECT_EQ(HString(INT_MIN, false), HString(L"-2147483648"));
  EXPECT_EQ(HString(LLONG_MIN, false), HString(L"-9223372036854775808"));
  EXPECT_EQ(HString(ULONG_MAX), HString(L"18446744073709551615"));
}

TEST(HStringNumber, truth_values_are_written_as_words) {
  EXPECT_EQ(HString(true), HString(L"true"));
  EXPECT_EQ(HString(false), HString(L"false"));
}

TEST(HStringNumber, doubles_are_written_as_short_as_they_can_be) {
  EXPECT_EQ(HString(0.1), HString(L"0.1"));
  EXPECT_EQ(HString(3.0), HString(L"3"));
  EXPECT_EQ(HString(-0.0), HString(L"-0"));
}

TEST(HStringNumber, a_written_double_reads_back_as_the_same_value) {
  for (double const value : {0.1, 1.0 / 3, 1e308, 5e-324, 9223372036854775808.0, -2.5e-10}) {
    EXPECT_EQ(read_back(value), value);
  }
}

TEST(HStringNumber, any_finite_double_reads_back_bit_for_bit) {
  std::mt19937_64 random(20231106);
  for (int i = 0; i < 20000; ++i) {
    auto const value = std::bit_cast<double>(random());
    if (value - value == 0) {
      ASSERT_EQ(std::bit_cast<std::uint64_t>(read_back(value)),
                std::bit_cast<std::uint64_t>(value));
    }
  }
}

TEST(HStringNumber, infinity_and_nan_do_not_read_back) {
  EXPECT_EQ(HString(std::numeric_limits<double>::infinity()), HString(L"inf"));
  EXPECT_EQ(read_back(std::numeric_limits<double>::infinity()), 0.0);
  EXPECT_EQ(read_back(std::numeric_limits<double>::quiet_NaN()), 0.0);
}

TEST(HStringNumber, the_sign_of_nan_which_differs_between_machines_is_not_written) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(HString(nan), HString(L"nan"));
  EXPECT_EQ(HString(std::copysign(nan, -1.0)), HString(L"nan"));
}

TEST(HStringNumber, to_int_reads_a_whole_decimal_text) {
  EXPECT_EQ(HString(L"42").to_int(), 42);
  EXPECT_EQ(HString(L" \t-42\r\n").to_int(), -42);
  EXPECT_EQ(HString(L"+7").to_int(), 7);
  EXPECT_EQ(HString(L"-2147483648").to_int(), INT_MIN);
}

TEST(HStringNumber, to_int_gives_0_for_anything_else) {
  for (wchar_t const* text : {L"", L" ", L"abc", L"12abc", L"1 2", L"1.5", L"+-1", L"--1", L"-",
                              L"0x10", L"2147483648", L"99999999999999999999", L"１２"}) {
    EXPECT_EQ(HString(text).to_int(), 0) << HString(text).length();
  }
}

TEST(HStringNumber, to_double_reads_point_and_exponent) {
  EXPECT_EQ(HString(L"2.5").to_double(), 2.5);
  EXPECT_EQ(HString(L" +2.5e-1 ").to_double(), 0.25);
  EXPECT_EQ(HString(L".5").to_double(), 0.5);
  EXPECT_EQ(HString(L"5.").to_double(), 5.0);
  EXPECT_EQ(HString(L"-1E+3").to_double(), -1000.0);
}

TEST(HStringNumber, to_double_gives_0_for_anything_else) {
  for (wchar_t const* text :
       {L"",      L".",     L"+",     L"e5",     L"1e",   L"1e+",    L"1,5",
        L"1.2.3", L"+-1.0", L"inf",   L"-inf",   L"nan",  L"nan(1)", L"infinity",
        L"0x1p3", L"1f",    L"1e999", L"-1e999", L"1 .5", L"१"}) {
    EXPECT_EQ(HString(text).to_double(), 0.0) << HString(text).length();
  }
}

TEST(HStringNumber, hexadecimal_text_is_read_without_prefix) {
  EXPECT_EQ(HString(L"000000ff").to_int64_0x(), 255);
  EXPECT_EQ(HString(L"FFFFFFFF").to_int64_0x(), 4294967295LL);
  EXPECT_EQ(HString(L"ffffffffffffffff").to_int64_0x(), -1);
  EXPECT_EQ(HString(L" 1a ").to_int64_0x(), 26);
}

TEST(HStringNumber, text_that_is_not_hexadecimal_gives_0) {
  for (wchar_t const* text : {L"", L"0x10", L"-1", L"+1", L"g", L"12 34", L"10000000000000000"}) {
    EXPECT_EQ(HString(text).to_int64_0x(), 0);
  }
}

TEST(HStringNumber, all_number_means_decimal_digits_only) {
  EXPECT_TRUE(HString(L"0123456789").is_all_number());
  for (wchar_t const* text : {L"", L"1a", L"-1", L"1.0", L" 1", L"１"}) {
    EXPECT_FALSE(HString(text).is_all_number());
  }
}

TEST(HStringNumber, like_double_means_digits_around_exactly_one_point) {
  for (wchar_t const* text : {L"1.5", L"-1.5", L"+1.5", L"1.", L".5", L"-.5"}) {
    EXPECT_TRUE(HString(text).is_like_double());
  }
  for (wchar_t const* text :
       {L"", L".", L"-.", L"15", L"1.2.3", L"1.5e3", L"a.5", L"1.b", L"1 .5"}) {
    EXPECT_FALSE(HString(text).is_like_double());
  }
}

TEST(HStringNumber, all_good_0x_means_hexadecimal_digits_without_prefix) {
  EXPECT_TRUE(HString(L"0123456789abcdefABCDEF").is_all_good_0x());
  for (wchar_t const* text : {L"", L"0x1", L"g", L"1 2"}) {
    EXPECT_FALSE(HString(text).is_all_good_0x());
  }
}

}  // namespace
