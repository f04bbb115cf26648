#include <memory>

#include <gtest/gtest.h>

#include "features/HFileFeature.h"
#include "host/Orlec/Global.h"
#include "host/Orlec/IFile.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Record = test::LogCapture::Record;

char const* const sample = "Revenue grew in the northern region while costs in the southern fell.";

std::string many_words() {
  std::string text;
  for (char a = 'a'; a <= 'z'; ++a) {
    for (char b = 'b'; b <= 'k'; ++b) {
      text += std::string("word") + a + b + ' ';
    }
  }
  return text;
}

class FileFeature : public testing::Test {
 protected:
  static void expect_parallel_lists(HFeatureNode const& node) {
    ASSERT_EQ(node.vt_counts.size(), node.vt_words.size());
    ASSERT_EQ(node.vt_weight.size(), node.vt_words.size());
    EXPECT_EQ(node.map_word_weight.size(), node.vt_words.size());
    for (std::size_t i = 0; i < node.vt_words.size(); ++i) {
      EXPECT_EQ(node.map_word_weight.at(node.vt_words[i]), node.vt_weight[i]);
    }
  }

  test::TemporaryDirectory directory;
  test::EnvironmentVariable run_path{"MORVA_RUN_PATH", directory.path() / "run"};
  HFeatureNode node;
};

TEST_F(FileFeature, a_text_fills_the_parallel_lists) {
  EXPECT_TRUE(HFileFeature::get_file_centent_feature(sample, L"a.txt", node));
  EXPECT_GT(node.vt_words.size(), 5U);
  expect_parallel_lists(node);
}

TEST_F(FileFeature, a_document_of_many_words_gives_100) {
  EXPECT_TRUE(HFileFeature::get_file_centent_feature(many_words().c_str(), L"a", node));
  EXPECT_EQ(node.vt_words.size(), 100U);
  expect_parallel_lists(node);
}

TEST_F(FileFeature, an_empty_text_gives_an_empty_record) {
  node.vt_words = {L"old"};
  EXPECT_TRUE(HFileFeature::get_file_centent_feature(L"", L"a.txt", node));
  EXPECT_TRUE(node.vt_words.empty());
}

TEST_F(FileFeature, a_path_takes_the_name_of_the_file) {
  EXPECT_TRUE(HFileFeature::get_file_feature(directory.write("report.txt", sample), node, true));
  EXPECT_EQ(node.str_file_name, HString(L"report"));
  expect_parallel_lists(node);
}

TEST_F(FileFeature, a_preset_name_wins_and_loses_its_suffix) {
  node.str_file_name = L"preset.name.txt";
  EXPECT_TRUE(HFileFeature::get_file_feature(directory.write("report.txt", sample), node, true));
  // Once when the parser's name is taken and once when the record takes it.
  EXPECT_EQ(node.str_file_name, HString(L"preset"));
}

TEST_F(FileFeature, the_last_argument_of_a_path_is_not_read) {
  HString const path = directory.write("report.txt", sample);
  HFeatureNode other;
  EXPECT_TRUE(HFileFeature::get_file_feature(path, node, true));
  EXPECT_TRUE(HFileFeature::get_file_feature(path, other, false));
  EXPECT_EQ(node.vt_words, other.vt_words);
  EXPECT_EQ(node.vt_weight, other.vt_weight);
  EXPECT_EQ(node.str_file_name, other.str_file_name);
}

TEST_F(FileFeature, a_path_logs_the_sizes_of_the_lists) {
  HString const path = directory.write("a.txt", "revenue costs");
  test::LogCapture const log(3);
  HFileFeature::get_file_feature(path, node, true);
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{3, L"../HFileFeature", L"vt_words:2,vt_weight:2,vt_counts:2"}}));
}

TEST_F(FileFeature, an_empty_document_is_warned_of) {
  HString const path = directory.write("a.txt", "");
  test::LogCapture const log(3);
  EXPECT_FALSE(HFileFeature::get_file_feature(path, node, true));
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{2, L"../HFileFeature", L"str_file_centent empty"}}));
}

TEST_F(FileFeature, a_file_without_parser_leaves_the_record) {
  node.vt_words = {L"old"};
  node.str_file_name = L"name";
  test::LogCapture const log;
  EXPECT_FALSE(HFileFeature::get_file_feature(
      directory.write("a.bin", std::string("\0\1\2\377", 4)), node, true));
  EXPECT_EQ(node.vt_words.size(), 1U);
  EXPECT_EQ(node.str_file_name, HString(L"name"));
  EXPECT_TRUE(log.records().empty());
}

TEST_F(FileFeature, a_damaged_document_leaves_the_record_and_is_told_of) {
  HString const path = directory.write("a.xml", "<?xml version='1.0'?><a><b>text</a>");
  node.vt_words = {L"old"};
  Orlec::Global::pins()->mb_assert_log = true;
  test::LogCapture const log;
  EXPECT_FALSE(HFileFeature::get_file_feature(path, node, true));
  Orlec::Global::pins()->mb_assert_log = false;
  EXPECT_EQ(node.vt_words.size(), 1U);
  ASSERT_EQ(log.records().size(), 1U);
  std::wstring const& text = log.records()[0].text;
  EXPECT_EQ(text.substr(0, 23), L"get_file_feature, Line:");
  EXPECT_EQ(text.substr(text.size() - 14), L", ASSERT_FALSE");
}

TEST_F(FileFeature, a_parser_without_callback_empties_the_record) {
  HString const path = directory.write("a.txt", sample);
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  ASSERT_NE(parser, nullptr);
  node.vt_words = {L"old"};
  EXPECT_FALSE(HFileFeature::get_file_feature(parser.get(), node));
  EXPECT_TRUE(node.vt_words.empty());
}

TEST_F(FileFeature, text_files_give_the_name_of_the_first) {
  std::vector<HString> const files{directory.write("one.txt", sample),
                                   directory.write("two.txt", sample)};
  EXPECT_TRUE(HFileFeature::get_vt_file_feature(files, node));
  EXPECT_EQ(node.str_file_name, HString(L"one"));
}

TEST_F(FileFeature, text_files_leave_a_preset_name) {
  node.str_file_name = L"preset.txt";
  EXPECT_TRUE(HFileFeature::get_vt_file_feature({directory.write("one.txt", sample)}, node));
  EXPECT_EQ(node.str_file_name, HString(L"preset.txt"));
}

TEST_F(FileFeature, parsed_files_give_the_generated_name_of_the_text) {
  EXPECT_TRUE(HFileFeature::get_file_feature(
      std::vector<HString>{directory.write("one.txt", sample)}, node, true));
  EXPECT_EQ(node.str_file_name.length(), 32);
  EXPECT_FALSE(node.vt_words.empty());
}

TEST_F(FileFeature, parsed_files_leave_no_temporary_text) {
  HFileFeature::get_file_feature(std::vector<HString>{directory.write("one.txt", sample)}, node,
                                 true);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path() / "run" / "Tessarine"));
}

TEST_F(FileFeature, files_taken_as_text_are_not_parsed) {
  EXPECT_TRUE(HFileFeature::get_file_feature(
      std::vector<HString>{directory.write("one.txt", sample)}, node, false));
  EXPECT_EQ(node.str_file_name, HString(L"one"));
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "run"));
}

TEST_F(FileFeature, without_dictionary_the_record_is_empty) {
  test::TemporaryDirectory const empty;
  test::EnvironmentVariable const path("MORVA_DICT_PATH", empty.path());
  node.vt_words = {L"old"};
  EXPECT_FALSE(HFileFeature::get_file_centent_feature(sample, L"a.txt", node));
  EXPECT_TRUE(node.vt_words.empty());
  EXPECT_EQ(node.str_file_name, HString(L"a"));
}

}  // namespace
