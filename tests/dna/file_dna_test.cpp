#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include "dna/HFileDNA.h"
#include "dna/HFileSimHash.h"
#include "features/HFileWordNode.h"
#include "host/Orlec/Global.h"
#include "host/Orlec/IFile.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Record = test::LogCapture::Record;

char const* const sample =
    "The quarterly report lists revenue, costs and margins for every region of the company. "
    "Revenue grew in the northern region while costs in the southern region fell.\n";

// Temporary text goes to a directory of its own, and the DNA length is as at the start.
class FileDna : public testing::Test {
 protected:
  FileDna() { HFileDNA::mi_dna_length = 32; }
  ~FileDna() override { HFileDNA::mi_dna_length = 32; }

  test::TemporaryDirectory directory;
  test::EnvironmentVariable run_path{"MORVA_RUN_PATH", directory.path() / "run"};
};

class NoDictionary {
  test::TemporaryDirectory empty_;
  test::EnvironmentVariable path_{"MORVA_DICT_PATH", empty_.path()};
};

std::wstring assertion(std::wstring const& text) {
  // The line number is the source's own business.
  std::size_t const from = text.find(L"Line:") + 5;
  std::size_t const to = text.find(L',', from);
  return text.substr(0, from) + text.substr(to);
}

TEST_F(FileDna, the_length_is_32_before_any_call) {
  EXPECT_EQ(HFileDNA::get_dna_length(), 32);
}

TEST_F(FileDna, a_text_gives_a_narrow_dna_and_its_covered_characters) {
  HString dna;
  int count = -1;
  EXPECT_TRUE(HFileDNA::get_file_centent_dna(sample, L"sample", dna, &count, 32));
  EXPECT_EQ(dna.length(), 32);
  std::vector<WordNode> words;
  HFileWordNode::get_file_word_node(sample, L"sample", words, 0);
  int covered = 0;
  for (WordNode const& node : words) {
    covered += node.count * node.word.length();
  }
  EXPECT_EQ(count, covered);
  EXPECT_GT(count, 0);
}

TEST_F(FileDna, the_count_may_be_null_everywhere) {
  HString const path = directory.write("a.txt", sample);
  HString dna;
  EXPECT_TRUE(HFileDNA::get_file_centent_dna(sample, L"sample", dna, nullptr, 32));
  EXPECT_TRUE(HFileDNA::get_file_dna(path, dna, nullptr, 32));
  EXPECT_TRUE(HFileDNA::get_file_dna(std::vector<HString>{path}, dna, true, nullptr));
}

TEST_F(FileDna, a_length_stays_in_force) {
  HString dna;
  HFileDNA::get_file_centent_dna(sample, L"sample", dna, nullptr, 1024);
  EXPECT_EQ(dna.length(), 1024);
  HTessarineResult result;
  HFileDNA::get_file_dna(directory.write("a.txt", sample), dna, result, true);
  EXPECT_EQ(dna.length(), 1024);
  EXPECT_EQ(HFileDNA::get_dna_length(), 1024);
}

TEST_F(FileDna, the_result_form_is_narrow_before_a_length_was_given) {
  HString dna;
  HTessarineResult result;
  EXPECT_TRUE(HFileDNA::get_file_dna(directory.write("a.txt", sample), dna, result, true));
  EXPECT_EQ(dna.length(), 32);
}

TEST_F(FileDna, all_roads_give_one_dna) {
  HString const path = directory.write("a.txt", sample);
  HString of_text;
  HString of_path;
  HString of_result;
  HString of_plain;
  HString of_list;
  HTessarineResult result;
  int count = 0;
  int list_count = 0;
  HFileDNA::get_file_centent_dna(sample, L"sample", of_text, &count, 32);
  HFileDNA::get_file_dna(path, of_path, nullptr, 32);
  HFileDNA::get_file_dna(path, of_result, result, true);
  HFileDNA::get_file_dna(std::vector<HString>{path}, of_list, true, &list_count);
  EXPECT_EQ(of_path, of_text);
  EXPECT_EQ(of_result, of_text);
  EXPECT_EQ(of_list, of_text);
  EXPECT_EQ(list_count, count);
  EXPECT_EQ(result.i_word, count);
}

TEST_F(FileDna, the_word_count_of_a_record_adds_up) {
  HString const path = directory.write("a.txt", sample);
  HString dna;
  HTessarineResult result;
  HFileDNA::get_file_dna(path, dna, result, false);
  int const once = result.i_word;
  HFileDNA::get_file_dna(path, dna, result, false);
  EXPECT_EQ(result.i_word, 2 * once);
}

TEST_F(FileDna, nothing_remains_of_the_temporary_text) {
  HString dna;
  HTessarineResult result;
  HFileDNA::get_file_dna(directory.write("a.txt", sample), dna, result, true);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path() / "run" / "Tessarine"));
}

TEST_F(FileDna, a_missing_file_read_as_text_gives_no_dna) {
  HString dna(L"old");
  HTessarineResult result;
  EXPECT_FALSE(HFileDNA::get_file_dna(directory / "missing", dna, result, false));
  EXPECT_TRUE(dna.empty());
  EXPECT_EQ(result.i_word, 0);
}

TEST_F(FileDna, words_of_several_files_are_merged_before_they_are_hashed) {
  HString const a = directory.write("a.txt", sample);
  HString const b = directory.write("b.txt", "Margins and revenue of the northern region.\n");
  std::vector<WordNode> words;
  HFileWordNode::get_file_word_node(std::vector<HString>{a, b}, words, 0);
  std::map<HString, double> weights;
  for (WordNode const& node : words) {
    weights[node.word] = node.weight;
  }
  HString expected;
  HFileSimHash::simhashDNA(weights, expected);
  HString dna;
  EXPECT_TRUE(HFileDNA::get_file_dna(std::vector<HString>{a, b}, dna, true, nullptr));
  EXPECT_EQ(dna, expected);
}

TEST_F(FileDna, text_without_words_gives_none_and_logs_its_name) {
  test::LogCapture const log(3);
  HString dna(L"old");
  int count = 7;
  EXPECT_FALSE(HFileDNA::get_file_centent_dna(L"...", L"dots", dna, &count, 32));
  EXPECT_TRUE(dna.empty());
  EXPECT_EQ(count, 0);
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, L"../HFileDNA", L"file:dots dna is empty."}}));
}

TEST_F(FileDna, an_empty_document_is_warned_of) {
  HString const path = directory.write("empty.txt", " ");
  test::LogCapture const log(3);
  HString dna(L"old");
  int count = 7;
  EXPECT_FALSE(HFileDNA::get_file_dna(directory.write("empty.txt", ""), dna, &count, 64));
  EXPECT_EQ(log.records(), (std::vector<Record>{{2, L"../HFileDNA", L"str_file_centent empty"}}));
  EXPECT_EQ(dna, HString(L"old"));
  EXPECT_EQ(count, 7);
  EXPECT_EQ(HFileDNA::get_dna_length(), 32);
}

TEST_F(FileDna, a_file_without_parser_is_silent_unless_assertions_are_on) {
  HString const path = directory.write("a.bin", std::string("\0\1\2\3\377", 5));
  HString dna;
  {
    test::LogCapture const log;
    EXPECT_FALSE(HFileDNA::get_file_dna(path, dna, nullptr, 32));
    EXPECT_TRUE(log.records().empty());
  }
  Orlec::Global::pins()->mb_assert_log = true;
  test::LogCapture const log;
  EXPECT_FALSE(HFileDNA::get_file_dna(path, dna, nullptr, 32));
  Orlec::Global::pins()->mb_assert_log = false;
  ASSERT_EQ(log.records().size(), 1U);
  EXPECT_EQ(log.records()[0].level, 1);
  EXPECT_EQ(log.records()[0].tag, L"../HFileDNA");
  EXPECT_EQ(assertion(log.records()[0].text), L"get_file_dna, Line:, ASSERT_NULL");
}

TEST_F(FileDna, a_parser_without_callback_gives_nothing) {
  HString const path = directory.write("a.txt", sample);
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  ASSERT_NE(parser, nullptr);
  HString dna(L"old");
  EXPECT_FALSE(HFileDNA::get_file_dna(parser.get(), dna, nullptr, 1024));
  EXPECT_EQ(dna, HString(L"old"));
}

TEST_F(FileDna, without_dictionary_there_is_no_dna) {
  NoDictionary const none;
  HString const path = directory.write("a.txt", sample);
  HString dna(L"old");
  HTessarineResult result;
  EXPECT_FALSE(HFileDNA::get_file_dna(path, dna, result, true));
  EXPECT_TRUE(dna.empty());
  EXPECT_TRUE(std::filesystem::is_empty(directory.path() / "run" / "Tessarine"));
}

TEST_F(FileDna, without_dictionary_the_list_form_keeps_what_it_was_given) {
  NoDictionary const none;
  std::vector<HString> const files{directory.write("a.txt", sample)};
  HString dna(L"old");
  int count = 7;
  EXPECT_TRUE(HFileDNA::get_file_dna(files, dna, true, &count));
  EXPECT_EQ(dna, HString(L"old"));
  EXPECT_EQ(count, 0);
  dna.clear();
  EXPECT_FALSE(HFileDNA::get_file_dna(files, dna, true, &count));
}

TEST_F(FileDna, no_files_give_no_dna) {
  HString dna(L"old");
  int count = 7;
  EXPECT_FALSE(HFileDNA::get_file_dna(std::vector<HString>(), dna, true, &count));
  EXPECT_TRUE(dna.empty());
  EXPECT_EQ(count, 0);
}

TEST_F(FileDna, a_wide_dna_becomes_a_point_of_its_sums) {
  HString wide;
  std::vector<double> sums(128);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    sums[i] = (static_cast<double>(i) - 64.0) / 8.0;
  }
  HFileSimHash::simhashDowndimension1024(sums, wide);
  HPointN const point = HFileDNA::get_pointn(L"label", wide);
  EXPECT_EQ(point.str_label, HString(L"label"));
  ASSERT_EQ(point.n, 128);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    EXPECT_NEAR(point.vt_data[i], sums[i], 1e-6);
  }
}

TEST_F(FileDna, a_point_becomes_a_wide_dna) {
  EXPECT_EQ(HFileDNA::get_dna(HPointN(std::vector<double>(128, 1.5))).substr(0, 16),
            HString(L"8016E35F8016E35F"));
}

TEST_F(FileDna, a_value_above_the_range_wraps_around) {
  EXPECT_EQ(HFileDNA::get_dna(HPointN(std::vector<double>(128, 2147.483650))).get_first(2),
            HString(L"11"));
}

TEST_F(FileDna, a_value_that_fits_no_integer_gives_the_field_zero) {
  std::vector<double> values(128, std::nan(""));
  values[1] = 1e300;
  EXPECT_EQ(HFileDNA::get_dna(HPointN(values)).length(), 128);
}

TEST_F(FileDna, a_dna_of_the_wrong_length_is_refused_as_point) {
  test::LogCapture const log;
  HPointN const point = HFileDNA::get_pointn(L"label", L"0123");
  EXPECT_EQ(point.n, 0);
  EXPECT_TRUE(point.str_label.empty());
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{1, L"../HFileDNA", L"dna leng not is 1024, str_dna.length:4"}}));
}

TEST_F(FileDna, a_point_of_the_wrong_size_is_refused_as_dna) {
  test::LogCapture const log;
  EXPECT_EQ(HFileDNA::get_dna(HPointN()), HString(L"0"));
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, L"../HFileDNA", L"pointn size:0"}}));
}

}  // namespace
