#include <array>

#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/random_cases.h"
#include "cluster/update_rule.h"

#include "reference/clustering.h"
#include "reference/points.h"
#include "support/log_capture.h"

namespace {

using reference::Clusters;
using reference::count_of;
using reference::is_same;
using reference::Matrix;
using reference::RandomMatrix;
using reference::to_matrix;
using reference::to_points;
using test::for_random_points;

// Runs an engine alone and lets the manager run another; both must come to the plain form's result.
class Differential : public testing::Test {
 protected:
  Clusters managed{{42}};
};

class CanopyDifferential : public Differential {
 protected:
  void compare(reference::Canopy plain) {
    HClusterCanopy engine;
    engine.set_k(plain.k);
    engine.set_T1(plain.t1);
    engine.set_T2(plain.t2);
    std::vector<HPointN> const points = to_points(plain.points);
    if (plain.k == 0) {
      HClusterMgr::pins()->canopy(points, plain.t1, plain.t2, managed);
    }
    bool const ran = plain.run();
    EXPECT_EQ(engine.cluster(points), ran);
    EXPECT_EQ(engine.mb_finish, ran);
    EXPECT_EQ(engine.vt_result, plain.result);
    EXPECT_TRUE(is_same(engine.md_T1, plain.t1));
    EXPECT_TRUE(is_same(engine.md_T2, plain.t2)) << engine.md_T2 << " for " << plain.t2;
    std::vector<HPointN> centers;
    engine.get_out_center_point(centers);
    EXPECT_TRUE(is_same(to_matrix(centers), plain.centers()));
    if (plain.k == 0) {
      EXPECT_EQ(managed, plain.result);
    }
  }
};

TEST_F(CanopyDifferential, radii_from_the_points) {
  for_random_points(100, 10'000'000, [this](Matrix const& rows, RandomMatrix& /*random*/) {
    compare({rows, 0, 0.0, 0.0, {}});
  });
}

TEST_F(CanopyDifferential, given_radii) {
  for_random_points(150, 11'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    double const t2 = random.radius(rows);
    compare({rows, 0, random.one_in(5) ? random.radius(rows) : t2, t2, {}});
  });
}

TEST_F(CanopyDifferential, search_for_a_number) {
  for_random_points(80, 12'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    bool const is_given = random.one_in(3);
    double const t2 = is_given ? random.radius(rows) : 0.0;
    compare({rows, random.integer(-1, count_of(rows) + 2), t2, t2, {}});
  });
}

class KMeansDifferential : public Differential {
 protected:
  void compare(reference::KMeans plain) {
    test::UpdateRule const rule(plain.type);
    std::vector<HPointN> const points = to_points(plain.points);
    auto const k = static_cast<int>(plain.k);
    HClusterKMeans engine;
    engine.set_k(k);
    engine.set_use_canopy(plain.use_canopy);
    bool const ran = plain.run();
    test::LogCapture const log;
    EXPECT_EQ(engine.cluster(points), ran);
    EXPECT_EQ(engine.vt_result, plain.result);
    EXPECT_EQ(engine.mi_k, plain.k);
    EXPECT_TRUE(is_same(to_matrix(engine.vt_mean), plain.means));
    EXPECT_FALSE(engine.mb_finish);
    EXPECT_EQ(log.records(), expected_log(plain));
    HClusterMgr::pins()->kmeans(points, k, managed, plain.use_canopy);
    EXPECT_EQ(managed, plain.result);
    EXPECT_EQ(log.records().size(), 2 * expected_log(plain).size());
  }

  static std::vector<test::LogCapture::Record> expected_log(reference::KMeans const& plain) {
    std::vector<test::LogCapture::Record> records;
    std::wstring const tag = L"../HClusterKMeans";
    if (plain.is_short_of_canopies) {
      records.push_back(
          {2, tag, L"Not enough to be divided to " + std::to_wstring(plain.asked) + L" class."});
    }
    if (plain.type != 0 && plain.type != 1) {
      records.insert(records.end(), static_cast<std::size_t>(plain.updates),
                     {1, tag, L"gi_K_ClusterType:" + std::to_wstring(plain.type)});
    }
    return records;
  }

  static reference::KMeans settings(Matrix const& rows, int type, bool use_canopy,
                                    RandomMatrix& random) {
    reference::KMeans plain;
    plain.points = rows;
    plain.type = type;
    plain.use_canopy = use_canopy;
    plain.k = random.one_in(6) ? random.integer(-1, count_of(rows) + 1)
                               : random.integer(2, std::max(2, std::min(8, count_of(rows))));
    return plain;
  }
};

TEST_F(KMeansDifferential, means_from_farthest_seeds) {
  for_random_points(60, 20'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    compare(settings(rows, 0, false, random));
  });
}

TEST_F(KMeansDifferential, medians_from_farthest_seeds) {
  for_random_points(40, 21'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    compare(settings(rows, 1, false, random));
  });
}

TEST_F(KMeansDifferential, means_from_canopies) {
  for_random_points(40, 22'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    compare(settings(rows, 0, true, random));
  });
}

TEST_F(KMeansDifferential, medians_from_canopies) {
  for_random_points(25, 23'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    compare(settings(rows, 1, true, random));
  });
}

TEST_F(KMeansDifferential, means_that_stay) {
  for_random_points(20, 24'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    compare(settings(rows, random.integer(2, 4), random.one_in(2), random));
  });
}

class DbScanDifferential : public Differential {
 protected:
  void compare(reference::DbScan plain) {
    std::vector<HPointN> const points = to_points(plain.points);
    HClusterDBScan engine;
    engine.mb_use_similarity = plain.use_similarity;
    engine.set_eps(plain.eps);
    engine.set_similarity(plain.threshold);
    engine.set_min_ponits(plain.min_points);
    EXPECT_EQ(engine.cluster(points), plain.run());
    EXPECT_EQ(engine.vt_kernel, plain.kernel);
    EXPECT_EQ(engine.vt_border, plain.border);
    EXPECT_EQ(engine.vt_noise, plain.noise);
    EXPECT_EQ(engine.vt_result, plain.result);
    if (!plain.use_similarity || plain.threshold == 0.0) {
      HClusterMgr::pins()->dbscan(points, plain.eps, plain.min_points, plain.use_similarity,
                                  managed);
      EXPECT_EQ(managed, plain.result);
    }
  }

  static reference::DbScan settings(Matrix const& rows, RandomMatrix& random) {
    reference::DbScan plain;
    plain.points = rows;
    plain.min_points = random.one_in(8) ? random.integer(-2, count_of(rows) + 1)
                                        : random.integer(1, std::min(6, count_of(rows)));
    return plain;
  }
};

TEST_F(DbScanDifferential, by_distance) {
  for_random_points(200, 30'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    reference::DbScan plain = settings(rows, random);
    plain.eps = random.radius(rows);
    compare(plain);
  });
}

TEST_F(DbScanDifferential, by_similarity) {
  for_random_points(120, 31'000'000, [this](Matrix const& rows, RandomMatrix& random) {
    reference::DbScan plain = settings(rows, random);
    plain.use_similarity = true;
    plain.eps = random.radius(rows);
    if (random.one_in(3)) {
      plain.threshold = random.pick(std::array{-2.0, -1.0, -0.5, -0.0, 1.0, 0.9999999999999999,
                                               std::numeric_limits<double>::infinity(),
                                               std::numeric_limits<double>::quiet_NaN()});
    } else if (random.one_in(2)) {
      plain.threshold = reference::similarity(random.pick(rows), random.pick(rows));
      plain.threshold = random.one_in(2) ? plain.threshold : std::nextafter(plain.threshold, -2.0);
    }
    compare(plain);
  });
}

void compare_eps(Matrix const& rows, int min_points, bool use_distance) {
  std::vector<HPointN> const points = to_points(rows);
  Matrix const expected_lists = reference::value_lists(rows, use_distance);
  double const expected = reference::estimate_eps(expected_lists, min_points);
  Matrix lists;
  HParaPrefer::get_vt_all(points, lists, use_distance);
  EXPECT_TRUE(is_same(lists, expected_lists));
  double const by_lists = HParaPrefer::smart_eps(lists, min_points);
  EXPECT_TRUE(is_same(by_lists, expected)) << by_lists << " for " << expected;
  double const by_points = HParaPrefer::get_eps(points, min_points, use_distance);
  EXPECT_TRUE(is_same(by_points, expected)) << by_points << " for " << expected;
}

TEST(EpsDifferential, by_distance) {
  for_random_points(120, 40'000'000, [](Matrix const& rows, RandomMatrix& random) {
    compare_eps(rows, random.integer(-1, std::min(7, count_of(rows) + 1)), true);
  });
}

TEST(EpsDifferential, by_similarity) {
  for_random_points(80, 41'000'000, [](Matrix const& rows, RandomMatrix& random) {
    compare_eps(rows, random.integer(-1, std::min(7, count_of(rows) + 1)), false);
  });
}

}  // namespace
