#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/update_rule.h"
#include "features/HClusterFileData.h"
#include "features/HFileFeature.h"

#include "reference/clustering.h"
#include "reference/points.h"
#include "support/temporary_directory.h"

// The engines on the term weights of real texts, against the plain form. The folder comes from
// MORVA_CORPUS.
namespace {

using reference::Clusters;
using reference::is_same;
using reference::Matrix;

// The first texts of each folder of the corpus.
std::vector<std::filesystem::path> some_texts(std::filesystem::path const& root,
                                              std::size_t per_folder) {
  std::map<std::filesystem::path, std::vector<std::filesystem::path>> folders;
  for (auto const& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) {
      folders[entry.path().parent_path()].push_back(entry.path());
    }
  }
  std::vector<std::filesystem::path> texts;
  for (auto& [folder, files] : folders) {
    std::sort(files.begin(), files.end());
    files.resize(std::min(files.size(), per_folder));
    texts.insert(texts.end(), files.begin(), files.end());
  }
  return texts;
}

class CorpusClusters : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    char const* const corpus = std::getenv("MORVA_CORPUS");
    if (corpus == nullptr || *corpus == '\0') {
      return;
    }
    test::TemporaryDirectory const directory;
    test::EnvironmentVariable const run_path{"MORVA_RUN_PATH", directory.path() / "run"};
    std::vector<HFeatureNode> features;
    for (auto const& path : some_texts(std::filesystem::path(corpus) / "text", 10)) {
      HFeatureNode node;
      if (HFileFeature::get_file_feature(HString(path.c_str()), node, true)) {
        features.push_back(node);
      }
    }
    std::vector<HString> words;
    HClusterFileData::format_data(features, words, points, false);
    rows = reference::to_matrix(points);
  }
  static void TearDownTestSuite() {
    points.clear();
    rows.clear();
  }
  void SetUp() override {
    if (rows.empty()) {
      GTEST_SKIP() << "MORVA_CORPUS is not set";
    }
    ASSERT_GT(rows.size(), 100U);
    ASSERT_GT(rows[0].size(), 1000U);
  }

  static void compare_kmeans(int type, int k, bool use_canopy) {
    test::UpdateRule const rule(type);
    reference::KMeans plain;
    plain.points = rows;
    plain.k = k;
    plain.type = type;
    plain.use_canopy = use_canopy;
    bool const ran = plain.run();
    HClusterKMeans engine;
    engine.set_k(k);
    engine.set_use_canopy(use_canopy);
    EXPECT_EQ(engine.cluster(points), ran);
    EXPECT_EQ(engine.vt_result, plain.result);
    EXPECT_TRUE(is_same(reference::to_matrix(engine.vt_mean), plain.means));
    Clusters managed;
    HClusterMgr::pins()->kmeans(points, k, managed, use_canopy);
    EXPECT_EQ(managed, plain.result);
  }

  static inline std::vector<HPointN> points;
  static inline Matrix rows;
};

TEST_F(CorpusClusters, pair_measures_have_the_bits_of_the_plain_form) {
  HClusterCanopy engine;
  engine.InitBase(points);
  EXPECT_TRUE(is_same(engine.get_avg_distance(), reference::mean_distance(rows)));
  reference::Pair farthest{0.0};
  farthest.distance = engine.get_max_distance(farthest.i, farthest.j);
  reference::Pair const expected = reference::farthest_pair(rows);
  EXPECT_TRUE(is_same(farthest.distance, expected.distance));
  EXPECT_EQ(farthest.i, expected.i);
  EXPECT_EQ(farthest.j, expected.j);
  reference::Pair closest{0.0};
  closest.distance = engine.get_min_distance(closest.i, closest.j);
  reference::Pair const expected_closest = reference::closest_pair(rows);
  EXPECT_TRUE(is_same(closest.distance, expected_closest.distance));
  EXPECT_EQ(closest.i, expected_closest.i);
  EXPECT_EQ(closest.j, expected_closest.j);
}

TEST_F(CorpusClusters, canopies_are_those_of_the_plain_form) {
  reference::Canopy plain{rows, 0, 0.0, 0.0, {}};
  ASSERT_TRUE(plain.run());
  Clusters result;
  HClusterMgr::pins()->canopy(points, 0.0, 0.0, result);
  EXPECT_EQ(result, plain.result);
}

TEST_F(CorpusClusters, searched_canopies_are_those_of_the_plain_form) {
  reference::Canopy plain{rows, 20, 0.0, 0.0, {}};
  ASSERT_TRUE(plain.run());
  HClusterCanopy engine;
  engine.set_k(20);
  EXPECT_TRUE(engine.cluster(points));
  EXPECT_EQ(engine.vt_result, plain.result);
  EXPECT_TRUE(is_same(engine.md_T2, plain.t2));
}

TEST_F(CorpusClusters, kmeans_is_that_of_the_plain_form) {
  compare_kmeans(0, 8, false);
  compare_kmeans(0, 0, true);
}

TEST_F(CorpusClusters, kmedians_is_that_of_the_plain_form) {
  compare_kmeans(1, 8, false);
}

TEST_F(CorpusClusters, dbscan_is_that_of_the_plain_form) {
  double const suggested = HParaPrefer::get_eps(points, 4, true);
  for (double const eps : {suggested, 0.9 * suggested}) {
    reference::DbScan plain;
    plain.points = rows;
    plain.eps = eps;
    plain.min_points = 4;
    plain.run();
    Clusters result;
    HClusterMgr::pins()->dbscan(points, eps, 4, false, result);
    EXPECT_EQ(result, plain.result);
  }
}

TEST_F(CorpusClusters, dbscan_by_similarity_is_that_of_the_plain_form) {
  reference::DbScan plain;
  plain.points = rows;
  plain.use_similarity = true;
  plain.threshold = 0.25;
  plain.min_points = 3;
  HClusterDBScan engine;
  engine.mb_use_similarity = true;
  engine.set_similarity(0.25);
  engine.set_min_ponits(3);
  EXPECT_EQ(engine.cluster(points), plain.run());
  EXPECT_EQ(engine.vt_kernel, plain.kernel);
  EXPECT_EQ(engine.vt_result, plain.result);
}

TEST_F(CorpusClusters, the_estimate_has_the_bits_of_the_plain_form) {
  Matrix const lists = reference::value_lists(rows, true);
  for (int const min_points : {0, 1, 4, 20}) {
    EXPECT_TRUE(is_same(HParaPrefer::get_eps(points, min_points, true),
                        reference::estimate_eps(lists, min_points)));
  }
  EXPECT_TRUE(is_same(HParaPrefer::get_eps(points, 4, false), reference::eps_of(rows, 4, false)));
}

}  // namespace
