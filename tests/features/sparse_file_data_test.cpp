#include <cstdlib>
#include <filesystem>
#include <new>

#include <gtest/gtest.h>

#include "features/HClusterFileData.h"
#include "features/HFileFeature.h"
#include "features/HSparseFileData.h"
#include "features/random_features.h"

#include "reference/points.h"
#include "support/log_capture.h"
#include "support/memory_limit.h"
#include "support/temporary_directory.h"

namespace {

using reference::is_same;
using test::RandomFeatures;
using Words = std::vector<HString>;
using Features = std::vector<HFeatureNode>;

// Compares with the vocabulary of the records and the point of each one alone.
void expect_dense(Features const& features, Words const& words, HSparsePoints const& points,
                  bool use_dna) {
  Words expected_words;
  HClusterFileData::get_words(features, expected_words);
  ASSERT_EQ(words, expected_words);
  ASSERT_EQ(points.size(), features.size());
  for (std::size_t i = 0; i < features.size(); ++i) {
    HPointN expected;
    HClusterFileData::get_data(features[i], words, expected, use_dna);
    HPointN const point = points.at(static_cast<int>(i));
    ASSERT_TRUE(is_same(point.vt_data, expected.vt_data));
    ASSERT_EQ(point.n, expected.n);
    ASSERT_EQ(point.str_label, expected.str_label);
  }
}

class SparseFileData : public testing::Test {
 protected:
  Words words{L"old"};
  HSparsePoints points{{HPointN({7.0, 7.0})}};
};

TEST_F(SparseFileData, has_words_and_points_of_dense_data) {
  for (unsigned int seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    Features const features = RandomFeatures(seed).make();
    HSparseFileData::format_data(features, words, points, false);
    ASSERT_NO_FATAL_FAILURE(expect_dense(features, words, points, false));
  }
}

TEST_F(SparseFileData, gathered_record_by_record_has_words_and_points_of_dense_data) {
  for (unsigned int seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    Features const features = RandomFeatures(seed).make();
    HSparseFileData data;
    for (HFeatureNode const& node : features) {
      data.add(HFeatureNode(node));
      data.format_data(words, points);
    }
    EXPECT_EQ(data.size(), features.size());
    data.format_data(words, points);
    ASSERT_NO_FATAL_FAILURE(expect_dense(features, words, points, false));
  }
}

TEST_F(SparseFileData, of_some_records_has_words_and_points_of_these_alone) {
  for (unsigned int seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    Features const features = RandomFeatures(seed).make();
    HSparseFileData data;
    Features some;
    std::vector<int> members{-1, static_cast<int>(features.size())};
    for (std::size_t i = features.size(); i-- > 0;) {
      if (i % 2 == seed % 2) {
        members.push_back(static_cast<int>(i));
        some.push_back(features[i]);
      }
    }
    for (HFeatureNode const& node : features) {
      data.add(node);
    }
    data.format_data(members, words, points);
    ASSERT_NO_FATAL_FAILURE(expect_dense(some, words, points, false));
  }
}

TEST_F(SparseFileData, a_copy_stands_for_itself) {
  Features const features = RandomFeatures(3).make();
  HSparseFileData copy;
  {
    HSparseFileData original;
    for (HFeatureNode const& node : features) {
      original.add(HFeatureNode(node));
    }
    copy = original;
  }
  copy.add(features.front());
  copy.format_data(words, points);
  Features all = features;
  all.push_back(features.front());
  expect_dense(all, words, points, false);
}

TEST_F(SparseFileData, of_fingerprints_has_their_labelled_points) {
  Features features = RandomFeatures(5).make();
  for (HFeatureNode& node : features) {
    for (int i = 0; i < 128; ++i) {
      node.str_dna << (i % 3 == 0 ? L"7FFFFFFF" : L"80000A0F");
    }
  }
  HSparseFileData::format_data(features, words, points, true);
  expect_dense(features, words, points, true);
}

TEST_F(SparseFileData, of_what_is_no_fingerprint_has_an_empty_point_and_a_line) {
  test::LogCapture const log;
  HSparseFileData::format_data(Features(1), words, points, true);
  EXPECT_EQ(points.at(0).n, 0);
  EXPECT_EQ(log.records(), (std::vector<test::LogCapture::Record>{
                               {1, L"../HFileDNA", L"dna leng not is 1024, str_dna.length:0"}}));
}

TEST_F(SparseFileData, of_no_records_has_neither_words_nor_points) {
  HSparseFileData::format_data({}, words, points, false);
  expect_dense({}, words, points, false);
}

TEST_F(SparseFileData, a_word_for_which_there_was_no_memory_is_taken_as_new_later) {
#ifdef MORVA_SANITIZED
  GTEST_SKIP() << "sanitizers limit no memory";
#endif
  HSparseFileData data;
  HFeatureNode node;
  int next = 0;
  auto const take_new_word = [&] {
    node.vt_words = {HString(next, false)};
    data.add(node);
    ++next;
  };
  try {
    test::MemoryLimit const limit(std::size_t{16} << 20);
    while (next < 1'000'000) {
      take_new_word();
    }
  } catch (std::bad_alloc const&) {
    // What the last word took is given away, so that it has to be another text.
    node.vt_words.clear();
  }
  ASSERT_LT(next, 1'000'000);
  take_new_word();
  take_new_word();
  data.format_data(words, points);
  EXPECT_EQ(words.size(), static_cast<std::size_t>(next));
  EXPECT_EQ(points.size(), words.size());
}

TEST_F(SparseFileData, of_real_texts_has_words_and_points_of_dense_data) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr || *corpus == '\0') {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  test::TemporaryDirectory const directory;
  test::EnvironmentVariable const run_path{"MORVA_RUN_PATH", directory.path() / "run"};
  Features features;
  auto const texts = std::filesystem::path(corpus) / "text";
  for (auto const& entry : std::filesystem::recursive_directory_iterator(texts)) {
    HFeatureNode node;
    if (entry.is_regular_file() && features.size() < 150 &&
        HFileFeature::get_file_feature(HString(entry.path().c_str()), node, true)) {
      features.push_back(node);
    }
  }
  ASSERT_FALSE(features.empty());
  HSparseFileData::format_data(features, words, points, false);
  expect_dense(features, words, points, false);
}

}  // namespace
