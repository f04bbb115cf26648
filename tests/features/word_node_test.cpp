#include <gtest/gtest.h>

#include "features/HFileWordNode.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Words = std::vector<WordNode>;

TEST(FileWordNode, text_and_file_give_the_same_words) {
  test::TemporaryDirectory const directory;
  char const* const text = "小明硕士毕业于中国科学院计算所，后在日本京都大学深造。";
  Words of_text;
  Words of_file;
  Words of_files;
  EXPECT_TRUE(HFileWordNode::get_file_word_node(text, L"name", of_text, 0));
  HString const path = directory.write("text", text);
  EXPECT_TRUE(HFileWordNode::get_file_word_node(path, of_file, 0));
  EXPECT_TRUE(HFileWordNode::get_file_word_node(std::vector<HString>{path}, of_files, 0));
  ASSERT_GT(of_text.size(), 5U);
  ASSERT_EQ(of_file.size(), of_text.size());
  ASSERT_EQ(of_files.size(), of_text.size());
  for (std::size_t i = 0; i < of_text.size(); ++i) {
    EXPECT_EQ(of_file[i].word, of_text[i].word);
    EXPECT_EQ(of_file[i].weight, of_text[i].weight);
    EXPECT_EQ(of_files[i].word, of_text[i].word);
    EXPECT_EQ(of_files[i].weight, of_text[i].weight);
  }
}

TEST(FileWordNode, a_limit_gives_that_many_of_the_first_words) {
  char const* const text = "revenue costs margins region company report";
  Words all;
  Words two;
  HFileWordNode::get_file_word_node(text, L"name", all, 0);
  HFileWordNode::get_file_word_node(text, L"name", two, 2);
  ASSERT_GT(all.size(), 2U);
  ASSERT_EQ(two.size(), 2U);
  EXPECT_EQ(two[0].word, all[0].word);
  EXPECT_EQ(two[1].word, all[1].word);
}

TEST(FileWordNode, an_empty_list_of_files_is_no_failure) {
  Words words{WordNode{L"old", L"", 1, 1.0}};
  EXPECT_TRUE(HFileWordNode::get_file_word_node(std::vector<HString>(), words, 0));
  EXPECT_TRUE(words.empty());
}

TEST(FileWordNode, files_that_do_not_exist_are_no_failure) {
  Words words{WordNode{L"old", L"", 1, 1.0}};
  EXPECT_TRUE(HFileWordNode::get_file_word_node(std::vector<HString>{L"/missing"}, words, 0));
  EXPECT_TRUE(words.empty());
}

TEST(FileWordNode, a_missing_dictionary_is_a_failure_with_an_empty_result) {
  test::TemporaryDirectory const empty;
  test::EnvironmentVariable const path("MORVA_DICT_PATH", empty.path());
  test::LogCapture const log(3);
  Words words{WordNode{L"old", L"", 1, 1.0}};
  EXPECT_FALSE(HFileWordNode::get_file_word_node(L"some text", L"name", words, 0));
  EXPECT_TRUE(words.empty());
  std::wstring const expected = L"not exist jieba dict:" + HString(empty.path().c_str()).get_ws();
  EXPECT_EQ(log.records(),
            (std::vector<test::LogCapture::Record>{{1, L"../HFileWordNode", expected}}));
}

}  // namespace
