#include "numeric/internal/distance_sum.h"

#include <vector>

#include <gtest/gtest.h>

#include "numeric/sparse_tables.h"

#include "reference/points.h"

namespace {

using morva::DistanceSum;
using morva::DistanceTable;
using morva::Rows;
using morva::RowSum;
using reference::is_same;

double plain_sum(DistanceTable const& table) {
  double sum = 0.0;
  for (std::size_t i = 0; i < table.size(); ++i) {
    for (std::size_t j = i + 1; j < table.size(); ++j) {
      sum += morva::distance(table[i], table[j]);
    }
  }
  return sum;
}

TEST(DistanceSum, has_the_bits_of_the_plain_form_also_in_parts) {
  test::for_tables([](DistanceTable const& table) {
    double const expected = plain_sum(table);
    EXPECT_TRUE(is_same(DistanceSum(table).total(), expected));
    std::vector<RowSum> known;
    for (auto const& sums : test::in_parts(
             table.size(), 3, [&](Rows rows) { return DistanceSum(table).row_sums(rows); })) {
      known.insert(known.end(), sums.begin(), sums.end());
    }
    EXPECT_TRUE(is_same(DistanceSum(table).total(known), expected));
  });
}

TEST(DistanceSum, computes_again_what_was_predicted_for_another_binade) {
  DistanceTable const table = test::table_of(test::kinds().front(), 300, 1);
  std::vector<RowSum> const known(table.size(), RowSum{1.0, 900, true});
  EXPECT_TRUE(is_same(DistanceSum(table).total(known), plain_sum(table)));
}

}  // namespace
