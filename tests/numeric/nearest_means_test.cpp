#include "numeric/internal/nearest_means.h"

#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/internal/all_pairs.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/mean_products.h"
#include "numeric/internal/postings.h"

#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::DistanceTable;
using morva::NearestMeans;
using morva::Rows;
using morva::SparsePoint;
using reference::RandomMatrix;

// Few different values, so that some points are equally far from several means.
SparsePoint document(RandomMatrix& random) {
  constexpr int vocabulary = 500;
  reference::Point row = reference::zero_point(vocabulary);
  for (int word = random.integer(0, 12); word > 0; --word) {
    double const place = random.unit() * random.unit();
    row[static_cast<std::size_t>(vocabulary * place)] = random.integer(1, 4) * 0.25;
  }
  return morva::compress(HPointN(row));
}

std::vector<SparsePoint> documents(RandomMatrix& random, int count) {
  std::vector<SparsePoint> points;
  while (static_cast<int>(points.size()) < count) {
    points.push_back(document(random));
  }
  return points;
}

// Moves some means: to a point, by a little, onto another mean, or away from all.
void move(RandomMatrix& random, std::vector<SparsePoint>& means) {
  for (SparsePoint& mean : means) {
    if (!random.one_in(4)) {
      continue;
    }
    switch (random.integer(0, 3)) {
      case 0:
        mean = document(random);
        break;
      case 1:
        for (double& value : mean.values) {
          value += random.unit() * 1e-3;
        }
        mean = SparsePoint(mean.n, mean.columns, mean.values);
        break;
      case 2:
        mean = random.pick(means);
        break;
      default:
        mean = random.one_in(4) ? SparsePoint() : mean;
    }
  }
}

// Compares a search that goes on with one that begins anew, as `next` moves the means step by step.
template <typename Move>
void expect_same_steps(Rows rows, std::vector<SparsePoint> means, RandomMatrix& random,
                       Move const& next) {
  DistanceTable const points(documents(random, 120));
  ASSERT_TRUE(points.has_sparse_bounds());
  rows = rows.up_to(points.size());
  NearestMeans search(points);
  std::vector<std::size_t> found(rows.size());
  std::vector<std::size_t> expected(rows.size());
  for (int step = 0; step < 40; ++step) {
    DistanceTable const table(means, points.form());
    search.find(table, rows, found);
    morva::find_nearest(table, points, rows, expected);
    ASSERT_EQ(found, expected) << "step " << step;
    next(random, means);
  }
}

TEST(NearestMeans, are_those_of_every_mean_compared_anew_however_the_means_move) {
  for (int round = 0; round < 12; ++round) {
    SCOPED_TRACE(round);
    RandomMatrix random(static_cast<std::uint64_t>(round));
    std::vector<SparsePoint> const means = documents(random, random.integer(1, 20));
    expect_same_steps({static_cast<std::size_t>(round), 120}, means, random, move);
  }
}

// Moves each mean by some part of its length in all its words.
void drift(RandomMatrix& random, std::vector<SparsePoint>& means) {
  for (SparsePoint& mean : means) {
    double const part = std::pow(10.0, -random.integer(1, 17));
    for (double& value : mean.values) {
      value += (random.unit() - 0.5) * part;
    }
    mean = SparsePoint(mean.n, mean.columns, mean.values);
  }
}

TEST(NearestMeans, are_those_of_every_mean_compared_anew_while_all_means_drift) {
  for (int round = 0; round < 12; ++round) {
    SCOPED_TRACE(round);
    RandomMatrix random(static_cast<std::uint64_t>(round));
    std::vector<SparsePoint> means = documents(random, random.integer(2, 20));
    means.push_back(means.front());
    expect_same_steps(morva::every_row, means, random, drift);
  }
}

// Has values in most of the first columns and in few of the last; sums of their products are exact
// in any order.
SparsePoint mean_of_many(RandomMatrix& random) {
  constexpr int columns = 100;
  reference::Point row = reference::zero_point(columns);
  for (int column = 0; column < columns; ++column) {
    if (random.one_in(1 + column / 4)) {
      row[static_cast<std::size_t>(column)] = random.integer(1, 4) * 0.25;
    }
  }
  return morva::compress(HPointN(row));
}

TEST(MeanProducts, are_the_sums_of_the_products_with_each_mean) {
  for (int round = 0; round < 12; ++round) {
    RandomMatrix random(static_cast<std::uint64_t>(round));
    std::vector<SparsePoint> means;
    std::vector<SparsePoint const*> pointers;
    for (int count = random.integer(0, 70); count > 0; --count) {
      means.push_back(mean_of_many(random));
    }
    for (SparsePoint const& mean : means) {
      pointers.push_back(&mean);
    }
    morva::MeanProducts products(pointers);
    morva::Postings const plain(means);
    for (SparsePoint const& x : documents(random, 30)) {
      std::vector<double> found(means.size());
      std::vector<double> expected(means.size());
      products.multiply(x, found);
      plain.dots(x, 0, expected);
      ASSERT_EQ(found, expected) << "round " << round;
    }
  }
}

TEST(NearestMeans, starts_anew_for_another_number_of_means_or_other_rows) {
  RandomMatrix random(1);
  DistanceTable const points(documents(random, 50));
  NearestMeans search(points);
  std::vector<std::pair<int, Rows>> const searches = {{3, {0, 50}}, {5, {0, 50}}, {5, {10, 30}}};
  for (auto const& [means, rows] : searches) {
    DistanceTable const table(documents(random, means), points.form());
    std::vector<std::size_t> found(rows.size());
    std::vector<std::size_t> expected(rows.size());
    search.find(table, rows, found);
    morva::find_nearest(table, points, rows, expected);
    EXPECT_EQ(found, expected) << means << " means";
  }
}

}  // namespace
