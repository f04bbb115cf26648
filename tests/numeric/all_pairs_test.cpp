#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/internal/distance_sum.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/norm_search.h"
#include "numeric/internal/ordered_sum.h"

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::DistanceSum;
using morva::DistanceTable;
using morva::FoundPair;
using morva::OrderedSum;
using morva::Rows;
using morva::RowSum;
using morva::SparsePoint;
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

// A document has some of many words; the first words are common.
SparsePoint document(RandomMatrix& random, int words, std::function<double()> const& weight) {
  constexpr int vocabulary = 3000;
  reference::Point row = reference::zero_point(vocabulary);
  for (int w = 0; w < words; ++w) {
    double const place = random.unit() * random.unit() * random.unit();
    row[static_cast<std::size_t>(vocabulary * place)] = weight();
  }
  return morva::compress(HPointN(row));
}

struct Kind {
  std::string name;
  std::function<SparsePoint(RandomMatrix&, std::vector<SparsePoint> const&)> next;
};

std::vector<Kind> kinds() {
  auto const of_unit_length = [](SparsePoint const& point) {
    std::vector<double> values = point.values;
    for (double& value : values) {
      value /= std::sqrt(point.square_sum);
    }
    return SparsePoint(point.n, point.columns, std::move(values));
  };
  auto const weighted = [](RandomMatrix& random) {
    return document(random, random.integer(0, 30), [&] { return 1.0 - random.unit(); });
  };
  return {
      {"weights", [=](auto& random, auto const&) { return weighted(random); }},
      {"no weights",
       [](auto& random, auto const&) {
         return document(random, random.integer(1, 30), [] { return 1.0; });
       }},
      {"equal lengths",
       [=](auto& random, auto const&) {
         SparsePoint const point = weighted(random);
         return point.values.empty() ? point : of_unit_length(point);
       }},
      {"negative",
       [](auto& random, auto const&) {
         return document(random, random.integer(1, 30), [&] { return 1.0 - 2.0 * random.unit(); });
       }},
      {"duplicates",
       [=](auto& random, auto const& before) {
         return before.size() < 8 ? weighted(random) : before[before.size() % 8];
       }},
      {"one point",
       [=](auto& random, auto const& before) {
         return before.empty() ? weighted(random) : before.front();
       }},
      {"few bits",
       [](auto& random, auto const& before) {
         // Far from all the others is one.
         return before.empty()
                    ? SparsePoint(3000, {2999}, {1000.0})
                    : SparsePoint(3000, {0}, {std::floor(random.unit() * 0x1p35) * 0x1p-35});
       }},
      {"close together",
       [](auto& random, auto const& before) {
         return before.empty() ? SparsePoint(3000, {2999}, {1.0})
                               : SparsePoint(3000, {0, 1}, {1e9, 1e9 + random.unit()});
       }},
  };
}

DistanceTable table_of(Kind const& kind, std::size_t size, std::uint64_t seed) {
  RandomMatrix random(seed);
  std::vector<SparsePoint> points;
  while (points.size() < size) {
    points.push_back(kind.next(random, points));
  }
  return DistanceTable(std::move(points));
}

// Calls `check` for tables of every kind that bounds hold for, up to more points than a tile has.
template <typename Check>
void for_tables(Check const& check) {
  for (Kind const& kind : kinds()) {
    for (std::size_t const size : {2U, 3U, 9U, 40U, 530U}) {
      DistanceTable const table = table_of(kind, size, size);
      SCOPED_TRACE(kind.name + ", " + std::to_string(size));
      ASSERT_TRUE(size < 9 || table.has_sparse_bounds());
      if (table.has_sparse_bounds()) {
        check(table);
      }
    }
  }
}

// What `search(rows)` finds in parts of a table, behind each other.
template <typename Search>
auto in_parts(std::size_t size, std::size_t parts, Search const& search) {
  std::vector<decltype(search(Rows{}))> found;
  for (std::size_t part = 0; part < parts; ++part) {
    found.push_back(search(Rows{size * part / parts, size * (part + 1) / parts}));
  }
  return found;
}

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
  for_tables([](DistanceTable const& table) {
    double const expected = plain_sum(table);
    EXPECT_TRUE(is_same(DistanceSum(table).total(), expected));
    std::vector<RowSum> known;
    for (auto const& sums :
         in_parts(table.size(), 3, [&](Rows rows) { return DistanceSum(table).row_sums(rows); })) {
      known.insert(known.end(), sums.begin(), sums.end());
    }
    EXPECT_TRUE(is_same(DistanceSum(table).total(known), expected));
  });
}

TEST(DistanceSum, computes_again_what_was_predicted_for_another_binade) {
  DistanceTable const table = table_of(kinds().front(), 100, 1);
  std::vector<RowSum> const known(table.size(), RowSum{1.0, 900, true});
  EXPECT_TRUE(is_same(DistanceSum(table).total(known), plain_sum(table)));
}

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
  for_tables([](DistanceTable const& table) {
    auto const expected = plain_farthest(table);
    EXPECT_TRUE(is_same_pair(morva::farthest_by_norms(table), expected));
    std::optional<FoundPair> best;
    for (auto const& found : in_parts(
             table.size(), 3, [&](Rows rows) { return morva::farthest_by_norms(table, rows); })) {
      best = found && morva::is_farther(*found, best) ? found : best;
    }
    EXPECT_TRUE(is_same_pair(best, expected));
  });
}

}  // namespace
