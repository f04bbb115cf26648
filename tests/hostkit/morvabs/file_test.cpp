#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/HFile.h"
#include "host/native_path.h"

#include "support/temporary_directory.h"

namespace {

HString content_of(HString const& path) {
  HString text(L"old");
  HFile::GetFileContentAny(path, text);
  return text;
}

TEST(HFile, tells_files_from_directories) {
  test::TemporaryDirectory const directory;
  HString const file = directory.write("a", "x");
  HString const folder = HString(directory.path().c_str());
  EXPECT_TRUE(HFile::IsFileExist(file) && HFile::IsFileExist(folder));
  EXPECT_TRUE(HFile::IsFileExistFile(file));
  EXPECT_FALSE(HFile::IsFileExistFile(folder));
  EXPECT_TRUE(HFile::IsFileExistDir(folder));
  EXPECT_FALSE(HFile::IsFileExistDir(file));
}

TEST(HFile, nothing_exists_at_a_path_that_cannot_be) {
  for (HString const& path : {HString(), HString(L"/no/such/file"), HString(L"/\0", 2)}) {
    EXPECT_FALSE(HFile::IsFileExist(path));
    EXPECT_FALSE(HFile::IsFileExistFile(path));
    EXPECT_FALSE(HFile::IsFileExistDir(path));
  }
}

TEST(HFile, a_pipe_exists_but_is_no_file) {
  test::TemporaryDirectory const directory;
  ASSERT_EQ(mkfifo((directory.path() / "pipe").c_str(), 0600), 0);
  EXPECT_TRUE(HFile::IsFileExist(directory / "pipe"));
  EXPECT_FALSE(HFile::IsFileExistFile(directory / "pipe"));
}

TEST(HFile, make_dir_makes_missing_parents) {
  test::TemporaryDirectory const directory;
  EXPECT_TRUE(HFile::make_dir(directory / "a/b/c/"));
  EXPECT_TRUE(HFile::IsFileExistDir(directory / "a/b/c"));
}

TEST(HFile, make_dir_on_an_existing_directory_is_fine) {
  test::TemporaryDirectory const directory;
  EXPECT_TRUE(HFile::make_dir(HString(directory.path().c_str())));
}

TEST(HFile, make_dir_over_a_file_fails) {
  test::TemporaryDirectory const directory;
  directory.write("a", "x");
  EXPECT_FALSE(HFile::make_dir(directory / "a"));
  EXPECT_FALSE(HFile::make_dir(directory / "a/b"));
  EXPECT_FALSE(HFile::make_dir(HString()));
}

TEST(HFile, del_empty_dir_removes_only_an_empty_directory) {
  test::TemporaryDirectory const directory;
  HFile::make_dir(directory / "full");
  directory.write("full/a", "x");
  HFile::make_dir(directory / "empty");
  EXPECT_FALSE(HFile::del_empty_dir(directory / "full"));
  EXPECT_TRUE(HFile::del_empty_dir(directory / "empty"));
  EXPECT_FALSE(HFile::del_empty_dir(directory / "empty"));
  EXPECT_FALSE(HFile::del_empty_dir(HString()));
}

TEST(HFile, delete_file_removes_a_file_but_no_directory) {
  test::TemporaryDirectory const directory;
  directory.write("a", "x");
  HFile::make_dir(directory / "d");
  EXPECT_TRUE(HFile::delete_file(directory / "a"));
  EXPECT_FALSE(HFile::delete_file(directory / "a"));
  EXPECT_FALSE(HFile::delete_file(directory / "d"));
}

TEST(HFile, touch_makes_an_empty_file_and_its_directories) {
  test::TemporaryDirectory const directory;
  EXPECT_TRUE(HFile::touch(directory / "x/y/box.ini"));
  EXPECT_TRUE(HFile::IsFileExistFile(directory / "x/y/box.ini"));
  EXPECT_EQ(HFile::GetFileLen(directory / "x/y/box.ini"), 0);
}

TEST(HFile, touch_leaves_an_existing_file) {
  test::TemporaryDirectory const directory;
  directory.write("a", "content");
  EXPECT_TRUE(HFile::touch(directory / "a"));
  EXPECT_EQ(directory.read("a"), "content");
}

TEST(HFile, gives_a_files_length_in_bytes) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(HFile::GetFileLen(directory.write("a", "\xE4\xB8\xAD")), 3);
  EXPECT_EQ(HFile::GetFileLen(directory / "missing"), 0);
  EXPECT_EQ(HFile::GetFileLen(HString(directory.path().c_str())), 0);
}

TEST(HFile, a_length_above_4_gib_is_exact) {
  test::TemporaryDirectory const directory;
  HString const path = directory.write("sparse", "");
  std::filesystem::resize_file(directory.path() / "sparse", (std::uintmax_t{5} << 30) + 7);
  EXPECT_EQ(HFile::GetFileLen(path), (5LL << 30) + 7);
}

TEST(HFile, reads_utf8_with_and_without_mark) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(content_of(directory.write("a", "\xE4\xB8\xAD z")), HString(L"中 z"));
  EXPECT_EQ(content_of(directory.write("b", "\xEF\xBB\xBF\xE4\xB8\xAD")), HString(L"中"));
}

TEST(HFile, reads_utf16_by_its_mark) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(content_of(directory.write("a", std::string("\xFF\xFE\x2D\x4E\n\0", 6))),
            HString(L"中\n"));
}

TEST(HFile, reads_gb18030_by_detection) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(content_of(directory.write("a", "\xCE\xC4\xB5\xB5\xD6\xD0\xB5\xC4\xD6\xC7\xC4\xDC")),
            HString(L"文档中的智能"));
}

TEST(HFile, an_empty_file_is_an_empty_text) {
  test::TemporaryDirectory const directory;
  HString text(L"old");
  EXPECT_TRUE(HFile::GetFileContentAny(directory.write("a", ""), text));
  EXPECT_TRUE(text.empty());
}

TEST(HFile, a_file_that_cannot_be_read_leaves_the_text_empty) {
  test::TemporaryDirectory const directory;
  HString text(L"old");
  EXPECT_FALSE(HFile::GetFileContentAny(directory / "missing", text));
  EXPECT_TRUE(text.empty());
}

TEST(HFile, a_directory_is_not_read_as_text) {
  HString text(L"old");
  EXPECT_FALSE(HFile::GetFileContentAny(L"/", text));
  EXPECT_TRUE(text.empty());
}

TEST(HFile, a_file_above_1_gib_is_not_read_as_text) {
  test::TemporaryDirectory const directory;
  HString const path = directory.write("sparse", "");
  std::filesystem::resize_file(directory.path() / "sparse", (std::uintmax_t{1} << 30) + 1);
  HString text(L"old");
  EXPECT_FALSE(HFile::GetFileContentAny(path, text));
  EXPECT_TRUE(text.empty());
}

TEST(HFile, what_was_written_is_read_back) {
  test::TemporaryDirectory const directory;
  HString const text(L"标签\n3\n0.1|0.2|0.3\n\x01\U0001F600");
  EXPECT_TRUE(HFile::write_to_file(directory / "a", text, false, false));
  EXPECT_EQ(content_of(directory / "a"), text);
}

TEST(HFile, writing_replaces_the_file) {
  test::TemporaryDirectory const directory;
  HString const path = directory.write("a", "a longer old content");
  HFile::write_to_file(path, L"new", false, false);
  EXPECT_EQ(directory.read("a"), "new");
}

TEST(HFile, writing_appends_on_demand) {
  test::TemporaryDirectory const directory;
  HFile::write_to_file(directory / "a", L"一\n", false, true);
  HFile::write_to_file(directory / "a", L"two\n", false, true);
  EXPECT_EQ(directory.read("a"), "\xE4\xB8\x80\ntwo\n");
}

TEST(HFile, appending_keeps_old_bytes_that_are_no_utf8) {
  test::TemporaryDirectory const directory;
  std::string const old = "\xFF\xFE" + std::string(200000, '\xB1');
  HFile::write_to_file(directory.write("a", old), L"!", false, true);
  EXPECT_EQ(directory.read("a"), old + "!");
}

TEST(HFile, writing_where_there_is_no_directory_fails) {
  test::TemporaryDirectory const directory;
  EXPECT_FALSE(HFile::write_to_file(directory / "x/a", L"text", false, false));
  EXPECT_FALSE(HFile::write_to_file(directory / "x/a", L"text", false, true));
  EXPECT_FALSE(HFile::write_to_file(HString(), L"text", false, false));
}

TEST(HFile, writing_over_a_directory_fails) {
  test::TemporaryDirectory const directory;
  EXPECT_FALSE(HFile::write_to_file(HString(directory.path().c_str()), L"text", false, false));
  EXPECT_TRUE(HFile::IsFileExistDir(HString(directory.path().c_str())));
}

}  // namespace
