#include <gtest/gtest.h>

#include "cluster/random_cases.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"

#include "reference/measures.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using reference::is_same;
using reference::Matrix;
using reference::Members;
using reference::Pair;
using test::for_random_points;

Members random_members(Matrix const& points, reference::RandomMatrix& random) {
  Members members;
  for (int i = random.integer(0, 12); i > 0; --i) {
    members.push_back(random.integer(-2, reference::count_of(points) + 1));
  }
  return members;
}

TEST(HClusterDistance, pair_measures_have_the_bits_of_the_plain_form) {
  for_random_points(500, 1'000'000, [](Matrix const& rows, reference::RandomMatrix& /*random*/) {
    std::vector<HPointN> const points = reference::to_points(rows);
    EXPECT_PRED2([](double a, double b) { return is_same(a, b); },
                 HClusterDistance::get_avg_distance(points), reference::mean_distance(rows));
    Pair closest{0.0};
    closest.distance = HClusterDistance::get_min_distance_index(points, closest.i, closest.j);
    Pair const expected_closest = reference::closest_pair(rows);
    EXPECT_TRUE(is_same(closest.distance, expected_closest.distance))
        << closest.distance << " for " << expected_closest.distance;
    EXPECT_EQ(closest.i, expected_closest.i);
    EXPECT_EQ(closest.j, expected_closest.j);
    Pair farthest{0.0};
    farthest.distance = HClusterDistance::get_max_distance_index(points, farthest.i, farthest.j);
    Pair const expected_farthest = reference::farthest_pair(rows);
    EXPECT_TRUE(is_same(farthest.distance, expected_farthest.distance))
        << farthest.distance << " for " << expected_farthest.distance;
    EXPECT_EQ(farthest.i, expected_farthest.i);
    EXPECT_EQ(farthest.j, expected_farthest.j);
  });
}

TEST(HClusterDistance, pair_points_are_those_of_the_plain_form) {
  for_random_points(100, 2'000'000, [](Matrix const& rows, reference::RandomMatrix& /*random*/) {
    std::vector<HPointN> const points = reference::to_points(rows);
    HPointN a;
    HPointN b;
    HClusterDistance::get_min_distance_point(points, a, b);
    Pair const closest = reference::closest_pair(rows);
    EXPECT_TRUE(is_same(a.vt_data, reference::row(rows, std::max(closest.i, 0))));
    EXPECT_TRUE(is_same(b.vt_data, reference::row(rows, std::max(closest.j, 0))));
    HClusterDistance::get_max_distance_point(points, a, b);
    Pair const farthest = reference::farthest_pair(rows);
    EXPECT_TRUE(is_same(a.vt_data, reference::row(rows, std::max(farthest.i, 0))));
    EXPECT_TRUE(is_same(b.vt_data, reference::row(rows, std::max(farthest.j, 0))));
  });
}

TEST(HClusterDistance, sums_and_radius_have_the_bits_of_the_plain_form) {
  for_random_points(300, 3'000'000, [](Matrix const& rows, reference::RandomMatrix& random) {
    std::vector<HPointN> const points = reference::to_points(rows);
    Members const members = random_members(rows, random);
    int const index = random.integer(-2, reference::count_of(rows) + 1);
    EXPECT_TRUE(is_same(HClusterDistance::get_distance_sum(points, index, members),
                        reference::distance_sum(rows, index, members)));
    reference::Point const& from = random.pick(rows);
    EXPECT_TRUE(is_same(HClusterDistance::get_distance_sum(HPointN(from), points),
                        reference::distance_sum(from, rows)));
    EXPECT_TRUE(is_same(HClusterDistance::get_max_radius(points, members),
                        reference::max_radius(rows, members)));
  });
}

TEST(HClusterCenter, centers_have_the_bits_of_the_plain_form) {
  for_random_points(300, 4'000'000, [](Matrix const& rows, reference::RandomMatrix& random) {
    std::vector<HPointN> const points = reference::to_points(rows);
    Members const members = random_members(rows, random);
    EXPECT_TRUE(is_same(HClusterCenter::get_center_point(points, members).vt_data,
                        reference::center(rows, members)));
    EXPECT_TRUE(is_same(HClusterCenter::get_center_point(points).vt_data, reference::center(rows)));
    EXPECT_TRUE(is_same(HClusterCenter::get_median_point(points, members).vt_data,
                        reference::median(rows, members)));
  });
}

}  // namespace
