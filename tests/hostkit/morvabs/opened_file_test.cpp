#include <array>
#include <cerrno>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/Orlec/IFile.h"
#include "host/native_path.h"

#include "support/temporary_directory.h"

namespace {

TEST(IFile, opens_a_regular_file) {
  test::TemporaryDirectory const directory;
  HString const path = directory.write("a.txt", "0123456789");
  Orlec::IFile const file(path, false);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(file.GetError(), 0);
  EXPECT_EQ(file.GetLength(), 10);
  EXPECT_EQ(file.GetSize(), 10);
  EXPECT_EQ(file.GetPath(), path);
}

TEST(IFile, reads_at_any_offset) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory.write("a.txt", "0123456789"), false);
  std::array<char, 4> buffer{};
  EXPECT_EQ(file.ReadAt(3, buffer.data(), 4), 4);
  EXPECT_EQ(std::string(buffer.data(), 4), "3456");
}

TEST(IFile, a_read_over_the_end_is_short) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory.write("a.txt", "0123456789"), false);
  std::array<char, 8> buffer{};
  EXPECT_EQ(file.ReadAt(8, buffer.data(), 8), 2);
  EXPECT_EQ(file.ReadAt(10, buffer.data(), 8), 0);
  EXPECT_EQ(file.ReadAt(1000, buffer.data(), 8), 0);
}

TEST(IFile, a_negative_offset_or_size_fails) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory.write("a.txt", "0123456789"), false);
  char byte = 0;
  EXPECT_EQ(file.ReadAt(-1, &byte, 1), -1);
  EXPECT_EQ(file.ReadAt(0, &byte, -1), -1);
}

TEST(IFile, a_file_that_shrank_gives_what_is_left) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory.write("a.txt", "0123456789"), false);
  std::filesystem::resize_file(directory.path() / "a.txt", 4);
  std::array<char, 10> buffer{};
  EXPECT_EQ(file.ReadAt(0, buffer.data(), 10), 4);
  EXPECT_EQ(file.ReadAt(8, buffer.data(), 2), 0);
}

TEST(IFile, what_is_appended_after_opening_is_not_seen) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory.write("a.txt", "0123"), false);
  directory.write("a.txt", "01234567");
  std::array<char, 8> buffer{};
  EXPECT_EQ(file.ReadAt(0, buffer.data(), 8), 4);
}

TEST(IFile, a_missing_file_has_a_reason) {
  test::TemporaryDirectory const directory;
  Orlec::IFile const file(directory / "missing", false);
  char byte = 0;
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.GetError(), ENOENT);
  EXPECT_EQ(file.GetLength(), 0);
  EXPECT_EQ(file.ReadAt(0, &byte, 1), -1);
}

TEST(IFile, a_directory_is_refused) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(Orlec::IFile(HString(directory.path().c_str()), false).GetError(), EISDIR);
}

TEST(IFile, a_pipe_is_refused_without_waiting_for_a_writer) {
  test::TemporaryDirectory const directory;
  ASSERT_EQ(mkfifo((directory.path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Orlec::IFile(directory / "pipe", false).GetError(), EINVAL);
}

TEST(IFile, a_device_is_refused) {
  EXPECT_EQ(Orlec::IFile(L"/dev/zero", false).GetError(), EINVAL);
}

TEST(IFile, the_empty_path_and_a_path_with_a_null_character_do_not_exist) {
  EXPECT_EQ(Orlec::IFile(HString(), false).GetError(), ENOENT);
  EXPECT_EQ(Orlec::IFile(HString(L"/dev\0/x", 7), false).GetError(), ENOENT);
}

TEST(IFile, a_name_that_is_no_utf8_can_be_opened) {
  test::TemporaryDirectory const directory;
  directory.write("\xB1\xA8\xB8\xE6.txt", "x");
  HString const path = morvabs::from_path((directory.path() / "\xB1\xA8\xB8\xE6.txt").native());
  EXPECT_TRUE(Orlec::IFile(path, false).IsOpen());
}

}  // namespace
