#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include <gtest/gtest.h>

#include "host/Orlec/Global.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseFile.h"
#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::GetParser;
using Orlec::ParseFile;
using Orlec::ParseOutcome;
using Orlec::TextLineCallback;

std::unique_ptr<ParseFile> parser_for(test::MemoryReader& reader) {
  return std::unique_ptr<ParseFile>(GetParser(&reader, false));
}

std::wstring text_of(TextLineCallback const& callback, int limit) {
  auto* const text = callback.GetTextByType(Orlec::ParseTextType_main);
  wchar_t* buffer = nullptr;
  int length = -1;
  text->GetTextBuff(&buffer, length, limit);
  return std::wstring(buffer, static_cast<std::size_t>(length));
}

class CountingCallback final : public TextLineCallback {
 public:
  explicit CountingCallback(int& ended) : ended_(ended) {}
  ~CountingCallback() override { ++ended_; }

 private:
  int& ended_;
};

}  // namespace

TEST(GetParser, an_unknown_type_gives_null) {
  test::MemoryReader reader(
      "\x7F"
      "ELF\x02" +
          std::string(60, '\0'),
      "x.docx");
  EXPECT_EQ(GetParser(&reader, false), nullptr);
}

TEST(GetParser, a_file_of_an_unknown_type_is_still_closed_correctly) {
  auto const path = std::filesystem::temp_directory_path() / "morvakit_unknown_type";
  std::ofstream(path) << '\x7F' << "ELF" << '\x02' << std::string(60, '\0');
  {
    Orlec::IFile file(HString(path.c_str()), false);
    EXPECT_EQ(GetParser(&file, false), nullptr);
  }
  EXPECT_TRUE(std::filesystem::remove(path));
}

TEST(GetParser, a_missing_file_gives_null) {
  Orlec::IFile file(HString("/nowhere/at/all.docx"), false);
  EXPECT_EQ(GetParser(&file, false), nullptr);
}

TEST(GetParser, a_null_reader_gives_null) {
  EXPECT_EQ(GetParser(nullptr, false), nullptr);
}

TEST(GetParser, the_content_decides_and_not_the_name) {
  auto const bytes = OfficeDocument::word("<w:p><w:r><w:t>x</w:t></w:r></w:p>").bytes();
  EXPECT_EQ(test::parse_bytes(bytes, "picture.jpg").main(), "x");
}

TEST(GetParser, an_empty_file_is_a_document_with_an_empty_main_text) {
  auto const parsed = test::parse_bytes("", "empty.docx");
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
  EXPECT_EQ(parsed.main(), "");
}

TEST(ParseFile, before_the_parse_the_outcome_says_so) {
  test::MemoryReader reader("text\n", "document.txt");
  auto const parser = parser_for(reader);
  EXPECT_EQ(parser->GetOutcome(), ParseOutcome::not_parsed);
  EXPECT_EQ(parser->GetTextCallback(), nullptr);
}

TEST(ParseFile, an_alias_wins_over_the_name_that_was_set_and_that_over_the_path) {
  test::MemoryReader reader("text\n", "folder/on_disk.txt");
  auto const parser = parser_for(reader);
  EXPECT_EQ(parser->GetFileAlias(), HString("on_disk.txt"));
  parser->SetFileName(HString("given.txt"));
  EXPECT_EQ(parser->GetFileAlias(), HString("given.txt"));
  parser->SetFileAlias(HString("alias"));
  EXPECT_EQ(parser->GetFileAlias(), HString("alias"));
}

TEST(ParseFile, an_empty_alias_is_no_alias) {
  test::MemoryReader reader("text\n", "folder/on_disk.txt");
  auto const parser = parser_for(reader);
  parser->SetFileAlias(HString());
  EXPECT_EQ(parser->GetFileAlias(), HString("on_disk.txt"));
}

TEST(ParseFile, the_full_path_is_directory_and_name_where_they_were_set) {
  test::MemoryReader reader("text\n", "folder/on_disk.txt");
  auto const parser = parser_for(reader);
  EXPECT_EQ(parser->GetFileFullPath(), HString("folder/on_disk.txt"));
  parser->SetFilePath(HString("/else/"));
  EXPECT_EQ(parser->GetFileFullPath(), HString("/else/on_disk.txt"));
  parser->SetFileName(HString("given.txt"));
  EXPECT_EQ(parser->GetFileFullPath(), HString("/else/given.txt"));
}

TEST(ParseFile, the_folder_name_is_the_md5_of_the_full_path) {
  test::MemoryReader reader("text\n", "folder/../a b.txt");
  auto const parser = parser_for(reader);
  EXPECT_EQ(parser->GetFileFolderName(),
            HString("folder/../a b.txt").get_md5_std_format(HString()));
}

TEST(ParseFile, a_callback_of_the_caller_outlives_the_parser) {
  int ended = 0;
  auto callback = std::make_unique<CountingCallback>(ended);
  test::MemoryReader reader("text\n", "document.txt");
  auto parser = parser_for(reader);
  parser->SetCallBack(callback.get(), false);
  EXPECT_EQ(parser->GetTextCallback(), callback.get());
  EXPECT_TRUE(parser->InitFile());
  parser.reset();
  EXPECT_EQ(ended, 0);
  EXPECT_EQ(text_of(*callback, 100), L"text\n");
}

TEST(ParseFile, a_callback_that_was_given_away_ends_with_the_parser) {
  int ended = 0;
  test::MemoryReader reader("text\n", "document.txt");
  auto parser = parser_for(reader);
  parser->SetCallBack(std::make_unique<CountingCallback>(ended).release(), true);
  EXPECT_EQ(ended, 0);
  parser.reset();
  EXPECT_EQ(ended, 1);
}

TEST(ParseFile, a_parse_without_callback_has_an_outcome) {
  test::MemoryReader reader("text\n", "document.txt");
  auto const parser = parser_for(reader);
  EXPECT_TRUE(parser->InitFile());
  EXPECT_EQ(parser->GetOutcome(), ParseOutcome::text);
}

TEST(ParseFile, a_second_parse_begins_anew) {
  test::MemoryReader reader("text\n", "document.txt");
  auto const parser = parser_for(reader);
  TextLineCallback callback;
  parser->SetCallBack(&callback, false);
  parser->InitFile();
  EXPECT_TRUE(parser->InitFile());
  EXPECT_EQ(text_of(callback, 100), L"text\n");
}

TEST(ParseFile, a_mask_without_text_delivers_none) {
  test::MemoryReader reader("text\n", "document.txt");
  auto const parser = parser_for(reader);
  TextLineCallback callback;
  parser->SetMask(0);
  parser->SetCallBack(&callback, false);
  EXPECT_TRUE(parser->InitFile());
  EXPECT_EQ(text_of(callback, 100), L"");
}

TEST(ParseFile, a_file_over_its_bound_is_not_read) {
  Orlec::ParseLimits limits;
  limits.i_input_bytes = 3;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes("text\n");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "the file is over 3 bytes");
}

TEST(ParseFile, a_parse_whose_time_is_used_up_says_so) {
  Orlec::ParseLimits limits;
  limits.i_milliseconds = 0;
  test::ScopedLimits const scope(limits);
  auto const parsed =
      test::parse_bytes(OfficeDocument::word("<w:p><w:r><w:t>x</w:t></w:r></w:p>").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::timed_out);
}

TEST(GetTextBuff, a_text_over_the_limit_gives_exactly_as_many_characters) {
  test::MemoryReader reader("hello world\n", "document.txt");
  auto const parser = parser_for(reader);
  TextLineCallback callback;
  parser->SetCallBack(&callback, false);
  ASSERT_TRUE(parser->InitFile());
  EXPECT_EQ(text_of(callback, 5), L"hello");
  EXPECT_EQ(text_of(callback, 0), L"");
  EXPECT_EQ(text_of(callback, -1), L"");
}

TEST(GetOutcomeName, outcomes_have_different_names) {
  EXPECT_EQ(Orlec::GetOutcomeName(ParseOutcome::encrypted), HString("encrypted"));
  EXPECT_EQ(Orlec::GetOutcomeName(ParseOutcome::limit_reached), HString("limit reached"));
}

TEST(Global, both_names_give_one_object) {
  EXPECT_EQ(Orlec::Global::ins(), Orlec::Global::pins());
  EXPECT_FALSE(Orlec::Global::pins()->mb_assert_log);
}
