#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/rows.h"

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace test {

/// A document has some of many words; the first words are common.
inline morva::SparsePoint document(reference::RandomMatrix& random, int words,
                                   std::function<double()> const& weight) {
  constexpr int vocabulary = 3000;
  reference::Point row = reference::zero_point(vocabulary);
  for (int w = 0; w < words; ++w) {
    double const place = random.unit() * random.unit() * random.unit();
    row[static_cast<std::size_t>(vocabulary * place)] = weight();
  }
  return morva::compress(HPointN(row));
}

/// How the points of a table are made, each with those before it at hand.
struct Kind {
  std::string name;
  std::function<morva::SparsePoint(reference::RandomMatrix&,
                                   std::vector<morva::SparsePoint> const&)>
      next;
};

inline std::vector<Kind> kinds() {
  auto const of_unit_length = [](morva::SparsePoint const& point) {
    std::vector<double> values = point.values;
    for (double& value : values) {
      value /= std::sqrt(point.square_sum);
    }
    return morva::SparsePoint(point.n, point.columns, std::move(values));
  };
  auto const weighted = [](reference::RandomMatrix& random) {
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
         morva::SparsePoint const point = weighted(random);
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
                    ? morva::SparsePoint(3000, {2999}, {1000.0})
                    : morva::SparsePoint(3000, {0}, {std::floor(random.unit() * 0x1p35) * 0x1p-35});
       }},
      {"close together",
       [](auto& random, auto const& before) {
         return before.empty() ? morva::SparsePoint(3000, {2999}, {1.0})
                               : morva::SparsePoint(3000, {0, 1}, {1e9, 1e9 + random.unit()});
       }},
  };
}

inline morva::DistanceTable table_of(Kind const& kind, std::size_t size, std::uint64_t seed) {
  reference::RandomMatrix random(seed);
  std::vector<morva::SparsePoint> points;
  while (points.size() < size) {
    points.push_back(kind.next(random, points));
  }
  return morva::DistanceTable(std::move(points));
}

/// Calls `check` for tables of every kind that bounds hold for, up to more points than a tile has.
template <typename Check>
void for_tables(Check const& check) {
  for (Kind const& kind : kinds()) {
    for (std::size_t const size : {2U, 3U, 9U, 300U, 530U}) {
      morva::DistanceTable const table = table_of(kind, size, size);
      SCOPED_TRACE(kind.name + ", " + std::to_string(size));
      ASSERT_TRUE(size < 9 || table.has_sparse_bounds());
      if (table.has_sparse_bounds()) {
        check(table);
      }
    }
  }
}

/// What `search(rows)` finds in parts of a table, behind each other.
template <typename Search>
auto in_parts(std::size_t size, std::size_t parts, Search const& search) {
  std::vector<decltype(search(morva::Rows{}))> found;
  for (std::size_t part = 0; part < parts; ++part) {
    found.push_back(search(morva::Rows{size * part / parts, size * (part + 1) / parts}));
  }
  return found;
}

}  // namespace test
