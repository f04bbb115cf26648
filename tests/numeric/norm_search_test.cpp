#include "numeric/internal/norm_search.h"

#include <optional>

#include <gtest/gtest.h>

#include "numeric/sparse_tables.h"

#include "reference/points.h"

namespace {

using morva::DistanceTable;
using morva::FoundPair;
using morva::Rows;
using reference::is_same;

std::optional<FoundPair> plain_farthest(DistanceTable const& table) {
  std::optional<FoundPair> best;
  for (std::size_t i = 0; i < table.size(); ++i) {
    for (std::size_t j = i + 1; j < table.size(); ++j) {
      double const measured = morva::distance(table[i], table[j]);
      if (measured > (best ? best->distance : 0.0)) {
        best = FoundPair{i, j, measured};
      }
    }
  }
  return best;
}

bool is_same_pair(std::optional<FoundPair> const& a, std::optional<FoundPair> const& b) {
  if (!a || !b) {
    return !a && !b;
  }
  return a->i == b->i && a->j == b->j && is_same(a->distance, b->distance);
}

TEST(NormSearch, finds_the_first_of_the_farthest_pairs_also_in_parts) {
  test::for_tables([](DistanceTable const& table) {
    auto const expected = plain_farthest(table);
    EXPECT_TRUE(is_same_pair(morva::farthest_by_norms(table), expected));
    std::optional<FoundPair> best;
    for (auto const& found : test::in_parts(
             table.size(), 3, [&](Rows rows) { return morva::farthest_by_norms(table, rows); })) {
      best = found && morva::is_farther(*found, best) ? found : best;
    }
    EXPECT_TRUE(is_same_pair(best, expected));
  });
}

}  // namespace
