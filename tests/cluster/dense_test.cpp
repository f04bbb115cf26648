#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/update_rule.h"
#include "numeric/HClusterDistance.h"

#include "reference/clustering.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using reference::Clusters;
using reference::count_of;
using reference::is_same;
using reference::Matrix;
using reference::Point;
using reference::RandomMatrix;
using reference::to_points;

// Point sets without many zeros, of more points than are measured together, and with what bounds in
// single precision can stumble over.
class DensePoints : public testing::TestWithParam<int> {
 protected:
  Matrix points() {
    Matrix rows =
        spread(sizes[static_cast<std::size_t>(random.integer(0, 5))], random.integer(3, 24));
    for (Point& row : rows) {
      for (double& x : row) {
        x = altered(x);
      }
    }
    switch (GetParam()) {
      case 7:
        rows[0].pop_back();
        break;
      case 8:
        rows.back()[1] = std::numeric_limits<double>::quiet_NaN();
        break;
      case 9:
        rows.back()[1] = std::numeric_limits<double>::infinity();
        break;
      case 10:
        rows = outliers(rows);
        break;
      default:
        break;
    }
    return rows;
  }

  // A distance of the points, or one right beside it.
  double radius(Matrix const& rows) {
    double const exact = reference::distance(random.pick(rows), random.pick(rows));
    return random.one_in(2) ? exact : std::nextafter(exact, random.one_in(2) ? 0.0 : 1e300);
  }

  RandomMatrix random{static_cast<std::uint64_t>(GetParam() + 77)};

 private:
  static constexpr std::array sizes{2, 33, 63, 64, 129, 150};

  Matrix spread(int count, int dimensions) {
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      Point row;
      for (int d = 0; d < dimensions; ++d) {
        row.push_back(random.unit() + random.unit() - random.unit() - random.unit());
      }
      rows.push_back(random.one_in(9) && i > 0 ? rows[static_cast<std::size_t>(i / 2)] : row);
    }
    return rows;
  }
  double altered(double x) {
    switch (GetParam()) {
      case 1:
        return std::round(2.0 * x);
      case 2:
        return 1e9 + x;
      case 3:
        return 1e-140 * x;
      case 4:
        return 1e16 * x;
      case 5:
        return random.one_in(6) ? random.pick(std::array{0.0, -0.0}) : x;
      case 6:
        return std::ldexp(x, -random.integer(0, 60));
      default:
        return x;
    }
  }
  Matrix outliers(Matrix rows) {
    for (Point& row : rows) {
      for (double& x : row) {
        x = std::round(x) * (random.one_in(30) ? 40.0 : 1.0);
      }
    }
    return rows;
  }
};

TEST_P(DensePoints, measures_of_all_pairs_are_those_of_the_plain_form) {
  for (int round = 0; round < 8; ++round) {
    Matrix const rows = points();
    std::vector<HPointN> const list = to_points(rows);
    EXPECT_TRUE(is_same(HClusterDistance::get_avg_distance(list), reference::mean_distance(rows)));
    reference::Pair found{0.0};
    found.distance = HClusterDistance::get_max_distance_index(list, found.i, found.j);
    reference::Pair const farthest = reference::farthest_pair(rows);
    EXPECT_TRUE(is_same(found.distance, farthest.distance));
    EXPECT_EQ(std::pair(found.i, found.j), std::pair(farthest.i, farthest.j));
    found = {0.0};
    found.distance = HClusterDistance::get_min_distance_index(list, found.i, found.j);
    reference::Pair const closest = reference::closest_pair(rows);
    EXPECT_TRUE(is_same(found.distance, closest.distance));
    EXPECT_EQ(std::pair(found.i, found.j), std::pair(closest.i, closest.j));
  }
}

TEST_P(DensePoints, canopies_are_those_of_the_plain_form) {
  for (int round = 0; round < 6; ++round) {
    reference::Canopy plain;
    plain.points = points();
    plain.t1 = plain.t2 = random.one_in(3) ? 0.0 : radius(plain.points);
    Clusters clusters;
    HClusterMgr::pins()->canopy(to_points(plain.points), plain.t1, plain.t2, clusters);
    plain.run();
    EXPECT_EQ(clusters, plain.result);
  }
}

TEST_P(DensePoints, kmeans_and_kmedians_are_those_of_the_plain_form) {
  for (int round = 0; round < 2; ++round) {
    reference::KMeans plain;
    plain.points = points();
    // The plain form takes long where medians come round again and again.
    plain.points.resize(std::min<std::size_t>(plain.points.size(), 66));
    plain.k = random.integer(2, std::min(8, count_of(plain.points)));
    plain.type = round % 2;
    test::UpdateRule const rule(plain.type);
    Clusters clusters;
    HClusterMgr::pins()->kmeans(to_points(plain.points), static_cast<int>(plain.k), clusters,
                                plain.use_canopy);
    plain.run();
    EXPECT_EQ(clusters, plain.result);
  }
}

TEST_P(DensePoints, dbscan_is_that_of_the_plain_form) {
  for (int round = 0; round < 4; ++round) {
    reference::DbScan plain;
    plain.points = points();
    plain.eps = radius(plain.points);
    plain.min_points = random.integer(1, 6);
    Clusters clusters;
    HClusterMgr::pins()->dbscan(to_points(plain.points), plain.eps, plain.min_points, false,
                                clusters);
    plain.run();
    EXPECT_EQ(clusters, plain.result);
  }
}

TEST_P(DensePoints, the_estimate_of_a_radius_is_that_of_the_plain_form) {
  for (int round = 0; round < 2; ++round) {
    Matrix const rows = points();
    for (int const min_points : {-1, 0, 4, count_of(rows) - 1, count_of(rows)}) {
      EXPECT_TRUE(is_same(HParaPrefer::get_eps(to_points(rows), min_points, true),
                          reference::eps_of(rows, min_points, true)))
          << count_of(rows) << " points, " << min_points;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DensePoints, testing::Range(0, 11));

}  // namespace
