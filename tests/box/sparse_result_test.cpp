#include <gtest/gtest.h>

#include "box/HClusterResultMgr.h"
#include "box/HSparseResultMgr.h"
#include "cluster/random_cases.h"

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
