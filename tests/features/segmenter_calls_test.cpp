#include <gtest/gtest.h>

#include "features/HFileFeature.h"
#include "features/HFileWordNode.h"
#include "host/HStutterDict.h"

#include "recording_segmenter.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Call = RecordedCalls::Call;
using Calls = std::vector<Call>;
using Record = test::LogCapture::Record;

class SegmenterCalls : public testing::Test {
 protected:
  SegmenterCalls() { RecordedCalls::get() = {}; }

  Calls const& calls = RecordedCalls::get().calls;
  std::vector<WordNode> words{WordNode{L"old", L"", 1, 1.0}};
};

TEST_F(SegmenterCalls, a_limit_below_one_asks_for_100000_words) {
  HFileWordNode::get_file_word_node(L"text", L"name", words, 0);
  HFileWordNode::get_file_word_node(L"text", L"name", words, -5);
  EXPECT_EQ(calls, (Calls{{L"text", L"name", 100000, true}, {L"text", L"name", 100000, true}}));
}

TEST_F(SegmenterCalls, a_positive_limit_is_passed_on) {
  HFileWordNode::get_file_word_node(L"text", L"name", words, 1);
  HFileWordNode::get_file_word_node(L"file", words, 100);
  EXPECT_EQ(calls, (Calls{{L"text", L"name", 1, true}, {L"file", L"", 100, true}}));
}

TEST_F(SegmenterCalls, one_file_is_not_tested_for_existence) {
  EXPECT_TRUE(HFileWordNode::get_file_word_node(L"/missing", words, 0));
  EXPECT_EQ(calls, (Calls{{L"/missing", L"", 100000, true}}));
  EXPECT_TRUE(words.empty());
}

TEST_F(SegmenterCalls, files_that_do_not_exist_are_not_asked_about) {
  EXPECT_TRUE(HFileWordNode::get_file_word_node(std::vector<HString>{L"/missing"}, words, 0));
  EXPECT_TRUE(calls.empty());
  EXPECT_TRUE(words.empty());
}

TEST_F(SegmenterCalls, existing_files_are_asked_about_in_order) {
  test::TemporaryDirectory const directory;
  HString const a = directory.write("a", "x");
  HString const b = directory.write("b", "x");
  HFileWordNode::get_file_word_node(std::vector<HString>{b, L"/missing", a}, words, 7);
  EXPECT_EQ(calls, (Calls{{b.get_ws(), L"", 7, true}, {a.get_ws(), L"", 7, true}}));
}

TEST_F(SegmenterCalls, without_dictionary_there_is_no_call) {
  RecordedCalls::get().has_dictionary = false;
  EXPECT_FALSE(HFileWordNode::get_file_word_node(L"text", L"name", words, 0));
  EXPECT_FALSE(HFileWordNode::get_file_word_node(L"file", words, 0));
  EXPECT_FALSE(HFileWordNode::get_file_word_node(std::vector<HString>{L"/"}, words, 0));
  EXPECT_TRUE(calls.empty());
}

TEST_F(SegmenterCalls, the_dictionary_path_is_set_before_every_extraction) {
  test::EnvironmentVariable const path("MORVA_DICT_PATH", "/some/where");
  HStutterDict::pins()->set_dict_path(L"/else/where");
  HFileWordNode::get_file_word_node(L"file", words, 0);
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, HString(L"/some/where"));
}

TEST_F(SegmenterCalls, level_4_logs_the_memory_before_and_after) {
  test::LogCapture const log(4);
  HFileWordNode::get_file_word_node(L"text", L"name", words, 0);
  ASSERT_EQ(log.records().size(), 2U);
  EXPECT_EQ(log.records()[0].text.substr(0, 40), L"jieba  textrank_extractor bengin memory:");
  EXPECT_EQ(log.records()[1].text.substr(0, 37), L"jieba  textrank_extractor end memory:");
  for (Record const& record : log.records()) {
    EXPECT_EQ(record.level, 4);
    EXPECT_EQ(record.tag, L"../HFileWordNode");
    EXPECT_GT(std::stoll(record.text.substr(record.text.find(L':') + 1)), 0);
  }
}

TEST_F(SegmenterCalls, only_one_memory_line_is_logged_without_dictionary) {
  RecordedCalls::get().has_dictionary = false;
  test::EnvironmentVariable const path("MORVA_DICT_PATH", "/some/where");
  test::LogCapture const log(4);
  HFileWordNode::get_file_word_node(L"text", L"name", words, 0);
  ASSERT_EQ(log.records().size(), 2U);
  EXPECT_EQ(log.records()[0].text.substr(0, 40), L"jieba  textrank_extractor bengin memory:");
  EXPECT_EQ(log.records()[1],
            (Record{1, L"../HFileWordNode", L"not exist jieba dict:/some/where"}));
}

TEST_F(SegmenterCalls, no_memory_is_measured_at_other_levels) {
  test::LogCapture const log(3);
  HFileWordNode::get_file_word_node(L"text", L"name", words, 0);
  EXPECT_TRUE(log.records().empty());
  test::LogCapture const above(5);
  HFileWordNode::get_file_word_node(L"text", L"name", words, 0);
  EXPECT_TRUE(above.records().empty());
}

TEST_F(SegmenterCalls, files_log_no_memory) {
  test::LogCapture const log(4);
  HFileWordNode::get_file_word_node(L"file", words, 0);
  HFileWordNode::get_file_word_node(std::vector<HString>{L"/missing"}, words, 0);
  EXPECT_TRUE(log.records().empty());
}

TEST_F(SegmenterCalls, features_ask_for_100_words) {
  HFeatureNode node;
  EXPECT_TRUE(HFileFeature::get_file_centent_feature(L"", L"a.b.txt", node));
  EXPECT_EQ(calls, (Calls{{L"", L"a.b.txt", 100, true}}));
  EXPECT_EQ(node.str_file_name, HString(L"a.b"));
  EXPECT_TRUE(node.vt_words.empty());
}

}  // namespace
