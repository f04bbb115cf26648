#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "box/HClusterResultMgr.h"
#include "box/HSparseResultMgr.h"
#include "cluster/random_cases.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"

#include "reference/points.h"
#include "support/log_capture.h"

namespace {

using reference::Matrix;
using reference::RandomMatrix;
using Members = std::vector<int>;
using Words = std::vector<HString>;

Words numbered_words(int count) {
  Words words;
  for (int i = 0; i < count; ++i) {
    words.push_back(HString(L"w") + HString(i, false));
  }
  return words;
}

void expect_dense_texts(Matrix const& rows, Words words, Members const& members) {
  std::vector<HPointN> const points = reference::to_points(rows);
  HClusterResultBase expected;
  std::vector<test::LogCapture::Record> expected_lines;
  {
    test::LogCapture const log;
    ASSERT_TRUE(HClusterResultMgr::get_cluster_base_result(&expected, 3, words, points, members));
    expected_lines = log.records();
  }
  HClusterResultBase record;
  test::LogCapture const log;
  ASSERT_TRUE(
      HSparseResultMgr::get_cluster_base_result(&record, 3, words, HSparsePoints(points), members));
  EXPECT_EQ(record.str_class_name, expected.str_class_name);
  EXPECT_EQ(record.str_class_desc, expected.str_class_desc);
  EXPECT_EQ(record.str_class_feature, expected.str_class_feature);
  EXPECT_EQ(record.str_class_id.length(), 36);
  EXPECT_NE(record.str_class_id, expected.str_class_id);
  EXPECT_EQ(log.records(), expected_lines);
}

TEST(SparseResult, has_the_texts_of_dense_points) {
  test::for_random_points(40, 50'000'000, [](Matrix const& rows, RandomMatrix& random) {
    Members members;
    for (int i = random.integer(0, 8); i > 0; --i) {
      members.push_back(random.integer(-2, reference::count_of(rows) + 1));
    }
    // Mostly a word for each coordinate; points of another size add nothing.
    int const words = static_cast<int>(rows.front().size()) + (random.one_in(8) ? 1 : 0);
    expect_dense_texts(rows, numbered_words(words), members);
  });
}

// A few weights among thousands of words, of which some members share some.
Matrix few_weights(RandomMatrix& random) {
  int const words = random.integer(90, 3000);
  std::vector<double> const weights{1.0, 0.95, 0.9, 0.3, 0.1, 5e-324, 0.0, -0.0, -0.2, -1.0};
  Matrix rows;
  for (int i = random.integer(1, 6); i > 0; --i) {
    rows.emplace_back(static_cast<std::size_t>(words));
    for (int k = random.integer(0, 8); k > 0; --k) {
      int const range = random.one_in(2) ? words : std::min(words, 110);
      rows.back()[static_cast<std::size_t>(random.integer(0, range - 1))] = random.pick(weights);
    }
  }
  return rows;
}

TEST(SparseResult, of_few_weights_has_the_texts_of_dense_points) {
  for (std::uint64_t seed = 51'000'000; seed < 51'000'150; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomMatrix random(seed);
    Matrix const rows = few_weights(random);
    Members members;
    for (int i = random.integer(1, 5); i > 0; --i) {
      members.push_back(random.integer(0, reference::count_of(rows) - 1));
    }
    expect_dense_texts(rows, numbered_words(static_cast<int>(rows.front().size())), members);
  }
}

TEST(SparseResult, of_few_weights_has_the_radius_and_center_of_dense_points) {
  for (std::uint64_t seed = 52'000'000; seed < 52'000'150; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomMatrix random(seed);
    std::vector<HPointN> const points = reference::to_points(few_weights(random));
    Members const members = {0, static_cast<int>(points.size()) - 1,
                             random.integer(0, static_cast<int>(points.size()) - 1)};
    HSparsePoints const sparse(points);
    EXPECT_TRUE(reference::is_same(sparse.get_max_radius(members),
                                   HClusterDistance::get_max_radius(points, members)));
    EXPECT_TRUE(reference::is_same(sparse.get_center_point(members).vt_data,
                                   HClusterCenter::get_center_point(points, members).vt_data));
  }
}

TEST(SparseResult, without_members_has_the_lines_of_dense_points) {
  expect_dense_texts({{0.0, 1.0}, {2.0, 0.0}}, numbered_words(2), {});
}

TEST(SparseResult, without_words_or_points_has_the_texts_of_dense_points) {
  expect_dense_texts({}, {}, {});
  expect_dense_texts({}, numbered_words(3), {0});
}

TEST(SparseResult, without_a_record_is_refused) {
  EXPECT_FALSE(HSparseResultMgr::get_cluster_base_result(nullptr, 0, {}, HSparsePoints(), {}));
}

}  // namespace
