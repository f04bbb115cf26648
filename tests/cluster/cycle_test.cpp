#include <gtest/gtest.h>

#include "cluster/HClusterMgr.h"
#include "cluster/update_rule.h"

#include "reference/kmeans.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

// Searches small inputs for runs of K-means that do not end by themselves. With arithmetic means
// none is known; with medians some change for ever and end by the bound on the iterations.
namespace {

using reference::Clusters;
using reference::KMeans;
using reference::Matrix;

class Cycles : public testing::TestWithParam<int> {
 protected:
  // All k and both ways to seed, in the library and in the plain form.
  void run(Matrix const& rows) {
    std::vector<HPointN> const points = reference::to_points(rows);
    for (int k = 2; k <= 4; ++k) {
      for (bool const use_canopy : {false, true}) {
        KMeans plain;
        plain.points = rows;
        plain.k = k;
        plain.use_canopy = use_canopy;
        plain.type = GetParam();
        plain.run();
        Clusters result;
        HClusterMgr::pins()->kmeans(points, k, result, use_canopy);
        ASSERT_EQ(result, plain.result) << testing::PrintToString(rows) << " k " << k;
        longest_ = std::max(longest_, plain.updates);
      }
    }
  }

  // Every ascending list of `left` more values on a line; lists are tried as they are and shuffled.
  void run_lists(Matrix const& start, int from, int left) {
    if (left == 0) {
      run(start);
      Matrix shuffled = start;
      std::shuffle(shuffled.begin(), shuffled.end(), order_);
      run(shuffled);
      return;
    }
    for (int value = from; value < static_cast<int>(places_.size()); ++value) {
      Matrix rows = start;
      rows.push_back(reference::row(places_, value));
      run_lists(rows, value, left - 1);
    }
  }

  void expect_ends() const {
    if (GetParam() == 0) {
      EXPECT_LT(longest_, 50);
    } else {
      EXPECT_LE(longest_, KMeans::max_iterations);
    }
  }

  test::UpdateRule rule_{GetParam()};
  std::mt19937 order_{1};
  Matrix places_;
  int longest_ = 0;
};

TEST_P(Cycles, all_small_sets_on_a_line_end) {
  places_ = {{0}, {1}, {2}, {3}, {4}};
  for (int count = 1; count <= 6; ++count) {
    run_lists({}, 0, count);
  }
  expect_ends();
}

TEST_P(Cycles, all_small_sets_on_a_square_end) {
  places_ = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {2, 0}, {2, 1}};
  for (int count = 1; count <= 5; ++count) {
    run_lists({}, 0, count);
  }
  expect_ends();
}

TEST_P(Cycles, random_sets_end) {
  reference::RandomMatrix random(5);
  for (int round = 0; round < 300; ++round) {
    run(random.points(round % 2, random.integer(5, 14)));
  }
  expect_ends();
}

INSTANTIATE_TEST_SUITE_P(KMeans, Cycles, testing::Values(0, 1),
                         [](auto const& rule) { return rule.param == 0 ? "means" : "medians"; });

}  // namespace
