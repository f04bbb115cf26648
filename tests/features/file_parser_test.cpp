#include <memory>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "features/HClusterFileParser.h"
#include "host/HFile.h"
#include "host/Orlec/Global.h"
#include "host/Orlec/IFile.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Record = test::LogCapture::Record;

class FileParser : public testing::Test {
 protected:
  test::TemporaryDirectory directory;
  test::EnvironmentVariable run_path{"MORVA_RUN_PATH", directory.path() / "run"};
  HString const document = directory.write("report.v1.txt", "Some text.");
  HString const working_directory =
      directory / "run/Tessarine/" + document.get_md5_std_format(HString());
  std::vector<HString> texts;
};

TEST_F(FileParser, makes_both_directory_levels_in_a_fresh_root) {
  HString const made = HClusterFileParser::parse_to_txt(document, texts);
  EXPECT_EQ(made, working_directory + L"/");
  EXPECT_TRUE(HFile::IsFileExistDir(made));
}

TEST_F(FileParser, writes_the_main_text_to_a_file_of_its_own) {
  HString const made = HClusterFileParser::parse_to_txt(document, texts);
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_EQ(texts[0].get_path(true), made);
  EXPECT_EQ(texts[0].get_short_name().length(), 32);
  HString text;
  HFile::GetFileContentAny(texts[0], text);
  EXPECT_EQ(text, HString(L"Some text."));
}

TEST_F(FileParser, the_text_is_readable_by_its_owner_only) {
  HClusterFileParser::parse_to_txt(document, texts);
  struct stat status {};
  ASSERT_EQ(stat(std::filesystem::path(texts.at(0).get_ws()).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(FileParser, nobody_else_can_write_to_the_working_directories_whatever_the_umask) {
  mode_t const old = umask(0);
  HString const made = HClusterFileParser::parse_to_txt(document, texts);
  umask(old);
  for (HString const& each : {made, directory / "run/Tessarine", directory / "run"}) {
    struct stat status {};
    ASSERT_EQ(stat(std::filesystem::path(each.get_ws()).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0775U);
  }
}

TEST_F(FileParser, two_parses_share_a_directory_and_differ_in_their_files) {
  HString const first = HClusterFileParser::parse_to_txt(document, texts);
  HString const second = HClusterFileParser::parse_to_txt(document, texts);
  EXPECT_EQ(first, second);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_FALSE(texts[0] == texts[1]);
}

TEST_F(FileParser, adds_to_a_list_that_holds_entries) {
  texts.emplace_back(L"first");
  HClusterFileParser::parse_to_txt(document, texts);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0], HString(L"first"));
}

TEST_F(FileParser, removes_leftovers_of_every_part) {
  HFile::make_dir(working_directory);
  std::vector<HString> leftovers;
  for (auto const* suffix : {L".main", L".hf", L".comment", L".remark", L".fn", L".en", L".control",
                             L".property", L".other"}) {
    leftovers.push_back(working_directory + L"/report.v1" + suffix);
    HFile::touch(leftovers.back());
  }
  HString const other = working_directory + L"/report.v1.txt";
  HFile::touch(other);
  HClusterFileParser::parse_to_txt(document, texts);
  for (HString const& leftover : leftovers) {
    EXPECT_FALSE(HFile::IsFileExist(leftover));
  }
  EXPECT_TRUE(HFile::IsFileExist(other));
}

TEST_F(FileParser, a_type_without_parser_leaves_only_the_directory) {
  HString const binary = directory.write("a.bin", std::string("\0\1\2\377", 4));
  EXPECT_TRUE(HClusterFileParser::parse_to_txt(binary, texts).empty());
  EXPECT_TRUE(texts.empty());
  HString const made = directory / "run/Tessarine/" + binary.get_md5_std_format(HString());
  EXPECT_TRUE(HFile::IsFileExistDir(made));
  HClusterFileParser::del_parse_out_file(texts, HString());
  EXPECT_TRUE(HFile::IsFileExistDir(made));
}

TEST_F(FileParser, the_form_with_a_result_neither_reads_nor_writes_it) {
  HTessarineResult result;
  result.str_main = L"untouched";
  EXPECT_FALSE(HClusterFileParser::parse_to_txt(document, result, texts).empty());
  EXPECT_EQ(result.str_main, HString(L"untouched"));
  EXPECT_TRUE(result.str_path.empty());
  EXPECT_EQ(texts.size(), 1U);
}

TEST_F(FileParser, parsing_is_logged_with_the_path) {
  test::LogCapture const log;
  HClusterFileParser::parse_to_txt(document, texts);
  EXPECT_EQ(
      log.records(),
      (std::vector<Record>{{3, L"../HClusterFileParser", L"parse file : " + document.get_ws()}}));
}

TEST_F(FileParser, a_directory_that_cannot_be_made_is_logged) {
  test::EnvironmentVariable const blocked("MORVA_RUN_PATH", directory.path() / "report.v1.txt");
  test::LogCapture const log;
  EXPECT_TRUE(HClusterFileParser::parse_to_txt(document, texts).empty());
  EXPECT_TRUE(texts.empty());
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{1, L"../HClusterFileParser",
                                  L"faild, make dir: " + document.get_ws() + L"/Tessarine"}}));
}

TEST_F(FileParser, a_missing_parser_is_told_only_while_assertions_are_on) {
  std::vector<HString> none;
  test::LogCapture const log(1);
  HClusterFileParser::parse_to_txt(static_cast<Orlec::ParseFile*>(nullptr), none);
  EXPECT_TRUE(log.records().empty());
  Orlec::Global::pins()->mb_assert_log = true;
  EXPECT_TRUE(
      HClusterFileParser::parse_to_txt(static_cast<Orlec::ParseFile*>(nullptr), none).empty());
  Orlec::Global::pins()->mb_assert_log = false;
  ASSERT_EQ(log.records().size(), 1U);
  std::wstring const& text = log.records()[0].text;
  EXPECT_EQ(text.substr(0, 19), L"parse_to_txt, Line:");
  EXPECT_EQ(text.substr(text.size() - 13), L", ASSERT_NULL");
}

TEST_F(FileParser, an_opened_parser_writes_below_the_name_that_it_gives) {
  Orlec::IFile file(document, false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  ASSERT_NE(parser, nullptr);
  test::LogCapture const log;
  HString const made = HClusterFileParser::parse_to_txt(parser.get(), texts);
  EXPECT_EQ(made, directory / "run/Tessarine/" + parser->GetFileFolderName() + L"/");
  ASSERT_EQ(texts.size(), 1U);
  EXPECT_TRUE(HFile::IsFileExistFile(texts[0]));
  EXPECT_EQ(
      log.records(),
      (std::vector<Record>{{3, L"../HClusterFileParser", L"parse file : " + document.get_ws()}}));
}

TEST_F(FileParser, deletes_its_files_and_the_empty_directory) {
  HString const made = HClusterFileParser::parse_to_txt(document, texts);
  HClusterFileParser::del_parse_out_file(texts, made);
  EXPECT_FALSE(HFile::IsFileExist(texts.at(0)));
  EXPECT_FALSE(HFile::IsFileExist(made));
  EXPECT_TRUE(HFile::IsFileExistDir(directory / "run/Tessarine"));
}

TEST_F(FileParser, a_directory_with_another_file_stays) {
  HString const made = HClusterFileParser::parse_to_txt(document, texts);
  HFile::touch(made + L"other");
  HClusterFileParser::del_parse_out_file(texts, std::vector<HString>{made});
  EXPECT_FALSE(HFile::IsFileExist(texts.at(0)));
  EXPECT_TRUE(HFile::IsFileExistDir(made));
}

}  // namespace
