#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/random_cases.h"

#include "reference/clustering.h"
#include "reference/points.h"

// The steps of the engines on their own, with fields set by hand, against the plain form.
namespace {

using reference::ClusterMap;
using reference::Clusters;
using reference::count_of;
using reference::is_same;
using reference::Matrix;
using reference::Members;
using reference::RandomMatrix;
using reference::to_matrix;
using reference::to_points;
using test::for_random_points;

// Indices in any order, repeated and outside the list too.
Members random_members(Matrix const& rows, int most, RandomMatrix& random) {
  Members members;
  for (int i = random.integer(0, most); i > 0; --i) {
    members.push_back(random.integer(-1, count_of(rows)));
  }
  return members;
}

// Every point in one of some clusters, or in none; some are empty.
ClusterMap random_clusters(Matrix const& rows, RandomMatrix& random) {
  ClusterMap clusters;
  int const count = random.integer(1, 6);
  for (int key = 0; key < count; ++key) {
    clusters[key] = {};
  }
  for (int i = 0; i < count_of(rows); ++i) {
    if (!random.one_in(6)) {
      clusters[random.integer(0, count - 1)].push_back(i);
    }
  }
  return clusters;
}

TEST(HClusterBase, measures_are_those_of_the_plain_form) {
  for_random_points(40, 50'000'000, [](Matrix const& rows, RandomMatrix& random) {
    HClusterCanopy engine;
    engine.InitBase(to_points(rows));
    EXPECT_TRUE(is_same(engine.get_avg_distance(), reference::mean_distance(rows)));
    EXPECT_TRUE(is_same(engine.get_min_distance(), reference::closest_pair(rows).distance));
    reference::Pair farthest{0.0};
    farthest.distance = engine.get_max_distance(farthest.i, farthest.j);
    reference::Pair const expected = reference::farthest_pair(rows);
    EXPECT_TRUE(is_same(farthest.distance, expected.distance));
    EXPECT_EQ(farthest.i, expected.i);
    EXPECT_EQ(farthest.j, expected.j);
    Matrix queries{random.pick(rows), reference::center(rows)};
    queries.push_back(reference::zero_point(random.integer(0, 3)));
    for (reference::Point const& query : queries) {
      EXPECT_EQ(engine.get_nearest_index(HPointN(query)), reference::nearest_index(rows, query));
    }
    Members const members = random_members(rows, 9, random);
    EXPECT_TRUE(
        is_same(engine.get_center_point(members).vt_data, reference::center(rows, members)));
    EXPECT_TRUE(
        is_same(engine.get_median_point(members).vt_data, reference::median(rows, members)));
    EXPECT_TRUE(is_same(engine.get_max_radius(members), reference::max_radius(rows, members)));
    int const index = random.integer(-1, count_of(rows));
    EXPECT_TRUE(is_same(engine.get_distance_sum(index, members),
                        reference::distance_sum(rows, index, members)));
  });
}

TEST(HClusterCanopy, passes_are_those_of_the_plain_form) {
  for_random_points(100, 51'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::Canopy plain{rows, 0, 0.0, random.radius(rows), {}};
    HClusterCanopy engine;
    engine.InitBase(to_points(rows));
    engine.md_T2 = plain.t2;
    Members const indices = random_members(rows, 20, random);
    Clusters canopies;
    engine.start(indices, canopies);
    EXPECT_EQ(canopies, plain.pass(indices));
    int const seed = random.integer(-1, count_of(rows));
    Members remaining = indices;
    Members canopy = random_members(rows, 4, random);
    Members expected_remaining = remaining;
    Members expected_canopy = canopy;
    engine.get_vt_less_t2(seed, remaining, canopy);
    plain.take_near(seed, expected_remaining, expected_canopy);
    EXPECT_EQ(remaining, expected_remaining);
    EXPECT_EQ(canopy, expected_canopy);
  });
}

TEST(HClusterCanopy, searches_are_those_of_the_plain_form) {
  for_random_points(40, 52'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::Canopy plain{
        rows, random.integer(0, count_of(rows) + 1), 1.0, random.radius(rows), {}};
    HClusterCanopy engine;
    engine.InitBase(to_points(rows));
    engine.mi_k = plain.k;
    engine.md_T1 = plain.t1;
    engine.md_T2 = plain.t2;
    Members const indices = random_members(rows, 20, random);
    plain.result = plain.pass(indices);
    engine.vt_result = plain.result;
    EXPECT_EQ(engine.cluster_k(indices), plain.search(indices));
    EXPECT_EQ(engine.vt_result, plain.result);
    EXPECT_TRUE(is_same(engine.md_T2, plain.t2)) << engine.md_T2 << " for " << plain.t2;
  });
}

TEST(HClusterKMeans, seeds_are_those_of_the_plain_form) {
  for_random_points(60, 53'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::KMeans plain;
    plain.points = rows;
    plain.k = random.integer(2, count_of(rows) + 2);
    HClusterKMeans engine;
    engine.InitBase(to_points(rows));
    engine.mi_k = plain.k;
    std::vector<HPointN> means;
    Matrix expected;
    EXPECT_EQ(engine.get_k_means(means), plain.farthest_first(expected));
    EXPECT_TRUE(is_same(to_matrix(means), expected));
    Members const seeds = random_members(rows, 4, random);
    Members const candidates = random_members(rows, 12, random);
    EXPECT_EQ(engine.get_max_distance_index(seeds, candidates),
              plain.farthest_candidate(seeds, candidates));
  });
}

TEST(HClusterKMeans, assignments_are_those_of_the_plain_form) {
  for_random_points(60, 54'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::KMeans plain;
    plain.points = rows;
    for (int m = random.integer(1, 6); m > 0; --m) {
      plain.means.push_back(random.one_in(3)
                                ? reference::center(rows, random_members(rows, 4, random))
                                : random.pick(rows));
    }
    plain.k = random.one_in(5) ? random.integer(1, count_of(plain.means)) : count_of(plain.means);
    HClusterKMeans engine;
    engine.InitBase(to_points(rows));
    engine.vt_mean = to_points(plain.means);
    engine.mi_k = plain.k;
    ClusterMap clusters;
    engine.get_mean_cluster(clusters);
    EXPECT_EQ(clusters, plain.assignment());
    int const index = random.integer(0, count_of(rows) - 1);
    EXPECT_EQ(engine.get_mean_nearest_index(index), plain.nearest_mean(index));
    EXPECT_EQ(engine.is_exist_empty_cluster(clusters), reference::KMeans::has_empty(clusters));
  });
}

TEST(HClusterKMeans, updates_are_those_of_the_plain_form) {
  for_random_points(60, 55'000'000, [](Matrix const& rows, RandomMatrix& random) {
    ClusterMap const clusters = random_clusters(rows, random);
    reference::KMeans plain;
    plain.points = rows;
    plain.means.resize(clusters.size());
    HClusterKMeans engine;
    engine.InitBase(to_points(rows));
    std::vector<HPointN> means(clusters.size());
    plain.type = 0;
    plain.move_means(clusters);
    engine.update_mean(clusters, means);
    EXPECT_TRUE(is_same(to_matrix(means), plain.means));
    plain.type = 1;
    plain.move_means(clusters);
    engine.update_mean_kmedians(clusters, means);
    EXPECT_TRUE(is_same(to_matrix(means), plain.means));
  });
}

TEST(HClusterKMeans, repairs_are_those_of_the_plain_form) {
  for_random_points(80, 56'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::KMeans plain;
    plain.points = rows;
    HClusterKMeans engine;
    engine.InitBase(to_points(rows));
    ClusterMap clusters = random_clusters(rows, random);
    ClusterMap expected = clusters;
    engine.trim_mean_cluster(clusters);
    plain.repair(expected);
    EXPECT_EQ(clusters, expected);
    Members const members = random_members(rows, 9, random);
    std::map<int, double> distances{{1, 0.25}};
    std::map<int, double> expected_distances = distances;
    EXPECT_EQ(engine.get_mean_farest_index(members, distances),
              plain.farthest_member(members, expected_distances));
    ASSERT_EQ(distances.size(), expected_distances.size());
    for (auto const& [index, distance] : distances) {
      EXPECT_TRUE(is_same(distance, expected_distances.at(index)));
    }
  });
}

TEST(HClusterDBScan, marks_are_those_of_the_plain_form) {
  for_random_points(60, 57'000'000, [](Matrix const& rows, RandomMatrix& random) {
    reference::DbScan plain;
    plain.points = rows;
    plain.eps = random.radius(rows);
    plain.use_similarity = random.one_in(3);
    plain.min_points = random.integer(0, 4);
    HClusterDBScan engine;
    engine.InitBase(to_points(rows));
    engine.set_eps(plain.eps);
    engine.mb_use_similarity = plain.use_similarity;
    engine.set_min_ponits(plain.min_points);
    plain.mark_kernel();
    engine.mark_kernel_point();
    EXPECT_EQ(engine.vt_kernel, plain.kernel);
    plain.mark_border();
    engine.mark_border_point();
    EXPECT_EQ(engine.vt_border, plain.border);
    plain.mark_noise();
    engine.mark_noise_point();
    EXPECT_EQ(engine.vt_noise, plain.noise);
    int const i = random.integer(0, count_of(rows) - 1);
    int const j = random.integer(0, count_of(rows) - 1);
    EXPECT_EQ(engine.is_in_range(engine.vt_point[static_cast<std::size_t>(i)],
                                 engine.vt_point[static_cast<std::size_t>(j)]),
              plain.is_in_range(i, j));
  });
}

TEST(HClusterDBScan, runs_from_given_kernel_points_are_those_of_the_plain_form) {
  for_random_points(40, 58'000'000, [](Matrix const& rows, RandomMatrix& random) {
    HClusterDBScan engine;
    engine.InitBase(to_points(rows));
    reference::DbScan plain;
    plain.points = rows;
    plain.eps = random.radius(rows);
    for (int i = 0; i < count_of(rows); ++i) {
      if (random.one_in(2)) {
        plain.kernel.push_back(i);
      }
    }
    engine.set_eps(plain.eps);
    engine.vt_kernel = plain.kernel;
    engine.mb_mark_kernel = true;
    plain.mark_border();
    Clusters expected = plain.groups();
    reference::DbScan::merge(expected);
    for (int const index : plain.border) {
      plain.hand_out(index, expected);
    }
    EXPECT_EQ(static_cast<HClusterBase&>(engine).cluster(), !expected.empty());
    EXPECT_EQ(engine.vt_result, expected);
  });
}

TEST(HClusterDBScan, lists_are_those_of_the_plain_form) {
  for_random_points(60, 59'000'000, [](Matrix const& rows, RandomMatrix& random) {
    HClusterDBScan const engine;
    Members const a = random_members(rows, 8, random);
    Members const b = random_members(rows, 8, random);
    EXPECT_EQ(engine.is_intersect_between_vt(a, b), reference::DbScan::intersect(a, b));
    EXPECT_EQ(engine.is_in_vt_point(1, a), reference::DbScan::contains(a, 1));
    Members united = a;
    engine.union_both_vt(united, b, united);
    EXPECT_EQ(united, reference::DbScan::unite(a, b));
  });
}

}  // namespace
