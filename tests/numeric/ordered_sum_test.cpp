#include "numeric/internal/ordered_sum.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::OrderedSum;
using morva::RowSum;
using reference::is_same;
using reference::RandomMatrix;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

double added_one_by_one(std::vector<double> const& numbers) {
  return std::accumulate(numbers.begin(), numbers.end(), 0.0);
}

// Adds numbers in rows, together where that is possible.
double added_in_rows(std::vector<double> const& numbers, std::size_t row_size) {
  OrderedSum sum;
  for (std::size_t i = 0; i < numbers.size(); i += row_size) {
    auto const row = std::span(numbers).subspan(i, std::min(row_size, numbers.size() - i));
    auto const binade = sum.binade();
    if (!binade || !sum.add(morva::sum_rounded(row, *binade))) {
      sum.add(row);
    }
  }
  return sum.value();
}

TEST(OrderedSum, rows_add_up_to_the_bits_of_numbers_one_by_one) {
  for (int round = 0; round < 200; ++round) {
    RandomMatrix random(static_cast<std::uint64_t>(round));
    // The fewer bits, the more numbers lie between two multiples of the unit of the sum.
    double const scale = std::ldexp(1.0, random.integer(0, 52));
    std::vector<double> numbers;
    for (int i = random.integer(1, 2000); i > 0; --i) {
      numbers.push_back(std::floor(random.unit() * scale) / scale * (round % 7 + 1));
    }
    numbers.push_back(std::ldexp(random.unit(), random.integer(0, 30)));
    auto const row_size = static_cast<std::size_t>(random.integer(1, 100));
    ASSERT_PRED2([](double a, double b) { return is_same(a, b); }, added_in_rows(numbers, row_size),
                 added_one_by_one(numbers))
        << "round " << round;
  }
}

TEST(OrderedSum, a_number_between_two_multiples_is_not_added_together) {
  EXPECT_FALSE(morva::sum_rounded(std::vector{1.0, 0x1p-53}, 0).is_certain);
  EXPECT_TRUE(morva::sum_rounded(std::vector{1.0, 0x1.8p-53}, 0).is_certain);
}

TEST(OrderedSum, what_leaves_the_binade_is_not_added_together) {
  OrderedSum sum;
  sum.add(std::vector{1.5});
  EXPECT_FALSE(sum.add(RowSum{0.5, 0, true}));
  EXPECT_FALSE(sum.add(RowSum{0.25, 1, true}));
  EXPECT_TRUE(sum.add(RowSum{0.25, 0, true}));
  EXPECT_EQ(sum.value(), 1.75);
}

TEST(OrderedSum, what_is_no_number_or_infinite_comes_out_as_one_by_one) {
  for (double const special : {nan, infinity, 1e308}) {
    std::vector<double> const numbers = {1.0, 2.0, 3.0, special, 5.0, special, 6.0, 7.0};
    EXPECT_TRUE(is_same(added_in_rows(numbers, 2), added_one_by_one(numbers))) << special;
  }
}

}  // namespace
