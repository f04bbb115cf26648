#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/Orlec/TextCallback.h"
#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

namespace fs = std::filesystem;

using Orlec::ParseOutcome;
using Orlec::TextLineCallback;

/// A directory of its own for each test.
class TextLineCallbackFile : public testing::Test {
 protected:
  TextLineCallbackFile() {
    auto pattern = (fs::temp_directory_path() / "morvakit_XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
  }
  ~TextLineCallbackFile() override { fs::remove_all(directory_); }

  std::string path() const { return (directory_ / "text").string(); }
  bool exists() const { return fs::exists(path()); }
  std::string content() const {
    std::ostringstream text;
    text << std::ifstream(path(), std::ios::binary).rdbuf();
    return text.str();
  }
  long files() const {
    return std::distance(fs::directory_iterator(directory_), fs::directory_iterator());
  }
  void begin(TextLineCallback& callback) const {
    callback.mb_in_memory = false;
    callback.SetOutputFile(HString(path().c_str()));
    callback.OnBegin();
  }
  /// Parses to the file; gives the outcome.
  ParseOutcome parse_to_file(std::string const& bytes) const {
    test::MemoryReader reader(bytes, "document.txt");
    std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
    TextLineCallback callback;
    callback.mb_in_memory = false;
    callback.SetOutputFile(HString(path().c_str()));
    parser->SetCallBack(&callback, false);
    parser->InitFile();
    return parser->GetOutcome();
  }

  fs::path directory_;
};

std::string word_text(std::string const& text) {
  return OfficeDocument::word("<w:p><w:r><w:t>" + text + "</w:t></w:r></w:p>").bytes();
}

}  // namespace

TEST(TextLineCallback, kinds_are_kept_apart) {
  TextLineCallback callback;
  callback.OnBegin();
  callback.OnText(Orlec::ParseTextType_main, "a");
  callback.OnText(Orlec::ParseTextType_comment, "b");
  callback.OnEnd(true);
  EXPECT_NE(callback.GetTextByType(Orlec::ParseTextType_comment), nullptr);
  EXPECT_EQ(callback.GetTextByType(Orlec::ParseTextType_hf), nullptr);
}

TEST(TextLineCallback, before_a_parse_there_is_no_text) {
  EXPECT_EQ(TextLineCallback().GetTextByType(Orlec::ParseTextType_main), nullptr);
}

TEST(TextLineCallback, a_kind_that_does_not_exist_has_no_text) {
  TextLineCallback callback;
  callback.OnBegin();
  EXPECT_TRUE(callback.OnText(static_cast<Orlec::ParseTextType>(77), "a"));
  EXPECT_EQ(callback.GetTextByType(static_cast<Orlec::ParseTextType>(77)), nullptr);
  EXPECT_EQ(callback.GetTextByType(static_cast<Orlec::ParseTextType>(0)), nullptr);
}

TEST(TextLineCallback, a_new_parse_drops_the_former_text) {
  TextLineCallback callback;
  callback.OnBegin();
  callback.OnText(Orlec::ParseTextType_comment, "b");
  callback.OnEnd(true);
  callback.OnBegin();
  EXPECT_EQ(callback.GetTextByType(Orlec::ParseTextType_comment), nullptr);
}

TEST(TextLineCallback, other_kinds_over_their_bound_do_not_end_the_main_text) {
  Orlec::ParseLimits limits;
  limits.i_memory_chars = 10;
  test::ScopedLimits const scope(limits);
  auto document = OfficeDocument::word("<w:p><w:r><w:t>body</w:t></w:r></w:p>");
  document.relation("word/document.xml", "rId7", "comments", "comments.xml");
  document.part("word/comments.xml",
                word_part("w:comments", "<w:p><w:r><w:t>0123456789abc</w:t></w:r></w:p>"));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "text beside the main text over 10 characters");
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "0123456789");
}

TEST(TextLineCallback, without_an_output_file_the_text_stays_in_memory) {
  TextLineCallback callback;
  callback.mb_in_memory = false;
  callback.OnBegin();
  callback.OnText(Orlec::ParseTextType_main, "a");
  EXPECT_TRUE(callback.OnEnd(true));
  wchar_t* buffer = nullptr;
  int length = 0;
  callback.GetTextByType(Orlec::ParseTextType_main)->GetTextBuff(&buffer, length, 10);
  EXPECT_EQ(length, 1);
}

TEST_F(TextLineCallbackFile, main_text_is_written_as_utf8_to_exactly_the_path) {
  EXPECT_EQ(parse_to_file(word_text("é 文\xF0\x9F\x98\x80")), ParseOutcome::text);
  EXPECT_EQ(content(), "é 文\xF0\x9F\x98\x80");
  EXPECT_EQ(files(), 1);
}

TEST_F(TextLineCallbackFile, only_the_owner_can_read_it) {
  parse_to_file(word_text("x"));
  struct stat status {};
  ASSERT_EQ(stat(path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(TextLineCallbackFile, in_memory_there_is_an_empty_main_text) {
  TextLineCallback callback;
  begin(callback);
  callback.OnText(Orlec::ParseTextType_main, "a");
  callback.OnText(Orlec::ParseTextType_comment, "b");
  callback.OnEnd(true);
  wchar_t* buffer = nullptr;
  int length = -1;
  callback.GetTextByType(Orlec::ParseTextType_main)->GetTextBuff(&buffer, length, 10);
  EXPECT_EQ(length, 0);
  EXPECT_NE(callback.GetTextByType(Orlec::ParseTextType_comment), nullptr);
}

TEST_F(TextLineCallbackFile, a_document_without_text_gives_an_empty_file) {
  EXPECT_EQ(parse_to_file(word_text("")), ParseOutcome::no_text);
  EXPECT_TRUE(exists());
  EXPECT_EQ(content(), "");
}

TEST_F(TextLineCallbackFile, a_damaged_document_gives_no_file) {
  EXPECT_EQ(parse_to_file(word_text("</broken>")), ParseOutcome::damaged);
  EXPECT_EQ(files(), 0);
}

TEST_F(TextLineCallbackFile, a_bound_ends_the_file_between_characters) {
  Orlec::ParseLimits limits;
  limits.i_output_bytes = 5;
  test::ScopedLimits const scope(limits);
  EXPECT_EQ(parse_to_file(word_text("文文文")), ParseOutcome::limit_reached);
  EXPECT_EQ(content(), "文");
}

TEST_F(TextLineCallbackFile, a_parse_that_runs_out_of_time_gives_the_text_so_far) {
  Orlec::ParseLimits limits;
  limits.i_milliseconds = 0;
  test::ScopedLimits const scope(limits);
  EXPECT_EQ(parse_to_file(word_text("x")), ParseOutcome::timed_out);
  EXPECT_TRUE(exists());
}

TEST_F(TextLineCallbackFile, a_path_that_cannot_be_written_fails) {
  test::MemoryReader reader(word_text("x"), "document.txt");
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
  TextLineCallback callback;
  callback.mb_in_memory = false;
  HString const output((path() + "/below/nothing").c_str());
  callback.SetOutputFile(output);
  parser->SetCallBack(&callback, false);
  EXPECT_FALSE(parser->InitFile());
  EXPECT_EQ(parser->GetOutcome(), ParseOutcome::failed);
  EXPECT_EQ(parser->GetReason(), output + L" cannot be written: No such file or directory");
}

TEST_F(TextLineCallbackFile, a_callback_that_ends_without_keeping_leaves_nothing) {
  TextLineCallback callback;
  begin(callback);
  callback.OnText(Orlec::ParseTextType_main, "a");
  EXPECT_TRUE(callback.OnEnd(false));
  EXPECT_EQ(files(), 0);
}
