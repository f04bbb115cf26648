#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/inverted_search.h"

#include "reference/measures.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace test {

/// The points of a matrix with their plain distances, and searches over them: by an index of so
/// many bands, or as the table itself chooses.
class Searched {
 public:
  explicit Searched(reference::Matrix const& rows)
      : rows_(rows),
        table_(morva::compress(reference::to_points(rows)), morva::DistanceTable::Form::sparse) {}
  Searched(reference::Matrix const& rows, std::size_t bands)
      : rows_(rows),
        table_(morva::compress(reference::to_points(rows)), morva::DistanceTable::Form::sparse) {
    if (table_.has_sparse_bounds()) {
      index_.emplace(table_.points(), bands);
    }
  }

  bool is_possible() const { return index_.has_value(); }
  std::size_t size() const { return rows_.size(); }
  morva::DistanceTable const& table() const { return table_; }
  void neighbours(morva::Rows rows, double limit, morva::DistanceTable::Border border,
                  morva::VisitNeighbours const& visit) const {
    if (index_) {
      morva::InvertedSearch search(table_, *index_);
      for (std::size_t i = rows.begin; i < rows.end; ++i) {
        visit(i, search.neighbours(i, limit, border));
      }
    } else {
      morva::for_each_neighbourhood(table_, limit, border, visit, rows);
    }
  }
  reference::Matrix smallest_distances(morva::Rows rows, std::size_t count) const {
    return index_ ? morva::InvertedSearch(table_, *index_).smallest_distances(rows, count)
                  : morva::smallest_distances(table_, count, rows);
  }
  std::vector<double> greatest_within(morva::Rows rows, double limit) const {
    return index_ ? morva::InvertedSearch(table_, *index_).greatest_within(rows, limit)
                  : morva::greatest_within(table_, limit, rows);
  }
  std::optional<morva::FoundPair> closest_pair(morva::Rows rows) const {
    return index_ ? morva::InvertedSearch(table_, *index_).closest_pair(rows)
                  : morva::closest_pair(table_);
  }
  double distance(std::size_t i, std::size_t j) const {
    return reference::distance(rows_[i], rows_[j]);
  }

 private:
  reference::Matrix const& rows_;
  morva::DistanceTable table_;
  std::optional<morva::InvertedIndex> index_;
};

inline void expect_same_neighbours(Searched const& points, morva::Rows rows, double limit,
                                   morva::DistanceTable::Border border) {
  std::size_t row = rows.begin;
  points.neighbours(rows, limit, border, [&](std::size_t i, std::span<std::uint32_t const> near) {
    ASSERT_EQ(i, row++);
    std::vector<std::uint32_t> expected;
    for (std::size_t j = i; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      if (border == morva::DistanceTable::Border::inside ? d <= limit : d < limit) {
        expected.push_back(static_cast<std::uint32_t>(j));
      }
    }
    EXPECT_EQ(std::vector(near.begin(), near.end()), expected) << "row " << i;
  });
  EXPECT_EQ(row, rows.end);
}

inline void expect_same_smallest(Searched const& points, morva::Rows rows, std::size_t count) {
  reference::Matrix const found = points.smallest_distances(rows, count);
  ASSERT_EQ(found.size(), rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    std::vector<double> expected;
    for (std::size_t j = 0; j < points.size(); ++j) {
      if (j != i) {
        expected.push_back(points.distance(i, j));
      }
    }
    reference::sort_values(expected);
    expected.resize(std::min(expected.size(), count));
    EXPECT_TRUE(reference::is_same(found[i - rows.begin], expected)) << "row " << i;
  }
}

inline void expect_same_greatest(Searched const& points, morva::Rows rows, double limit) {
  std::vector<double> const found = points.greatest_within(rows, limit);
  ASSERT_EQ(found.size(), rows.size());
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    double expected = 0.0;
    for (std::size_t j = 0; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      expected = j != i && d <= limit && d > expected ? d : expected;
    }
    EXPECT_TRUE(reference::is_same(found[i - rows.begin], expected)) << "row " << i;
  }
}

inline void expect_same_closest(Searched const& points, morva::Rows rows) {
  std::optional<morva::FoundPair> expected;
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    for (std::size_t j = i + 1; j < points.size(); ++j) {
      double const d = points.distance(i, j);
      if (d < (expected ? expected->distance : reference::no_distance)) {
        expected = morva::FoundPair{i, j, d};
      }
    }
  }
  auto const found = points.closest_pair(rows);
  ASSERT_EQ(found.has_value(), expected.has_value());
  if (found) {
    EXPECT_EQ(found->i, expected->i);
    EXPECT_EQ(found->j, expected->j);
    EXPECT_TRUE(reference::is_same(found->distance, expected->distance));
  }
}

/// Some words in most rows and most in few, weights that fall, rows that repeat others with and
/// without a change, and short ones.
inline reference::Matrix documents(int count, bool positive, reference::RandomMatrix& random) {
  reference::Matrix rows;
  for (int i = 0; i < count; ++i) {
    reference::Point row =
        rows.empty() || !random.one_in(6) ? reference::zero_point(300) : random.pick(rows);
    for (int w = random.one_in(6) ? random.integer(0, 2) : random.integer(0, 25); w > 0; --w) {
      double const rank = random.unit() * random.unit() * random.unit();
      double const weight = random.one_in(3) ? 0.5 : 1.0 / random.integer(1, 9);
      row[static_cast<std::size_t>(300.0 * rank)] =
          !positive && random.one_in(4) ? -weight : weight;
    }
    rows.push_back(row);
  }
  return rows;
}

}  // namespace test
