#include "morvabs/atomic_file.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temporary_directory.h"

namespace {

using morvabs::AtomicFile;
using Access = AtomicFile::Access;

mode_t permissions(std::filesystem::path const& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777U;
}

std::ptrdiff_t entries(test::TemporaryDirectory const& directory) {
  return std::distance(std::filesystem::directory_iterator(directory.path()), {});
}

bool write_whole(std::filesystem::path const& path, std::string const& text, Access access) {
  AtomicFile file(path, access);
  return file.write(text) && file.commit();
}

TEST(AtomicFile, puts_the_content_in_place) {
  test::TemporaryDirectory const directory;
  EXPECT_TRUE(write_whole(directory.path() / "a", "new", Access::keep));
  EXPECT_EQ(directory.read("a"), "new");
  EXPECT_EQ(entries(directory), 1);
}

TEST(AtomicFile, large_content_arrives_whole) {
  test::TemporaryDirectory const directory;
  std::string const text(300001, 'x');
  EXPECT_TRUE(write_whole(directory.path() / "a", text, Access::keep));
  EXPECT_EQ(directory.read("a"), text);
}

TEST(AtomicFile, without_commit_nothing_changes) {
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  {
    AtomicFile file(directory.path() / "a", Access::keep);
    EXPECT_TRUE(file.write("new"));
  }
  EXPECT_EQ(directory.read("a"), "old");
  EXPECT_EQ(entries(directory), 1);
}

TEST(AtomicFile, the_old_content_stands_until_commit) {
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  AtomicFile file(directory.path() / "a", Access::keep);
  file.write("new");
  EXPECT_EQ(directory.read("a"), "old");
}

TEST(AtomicFile, an_existing_file_keeps_its_permissions) {
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  std::filesystem::permissions(directory.path() / "a", std::filesystem::perms(0640));
  write_whole(directory.path() / "a", "new", Access::keep);
  EXPECT_EQ(permissions(directory.path() / "a"), 0640U);
}

TEST(AtomicFile, the_temporary_of_a_replaced_file_is_its_writers_alone_until_commit) {
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  std::filesystem::permissions(directory.path() / "a", std::filesystem::perms(0640));
  AtomicFile const file(directory.path() / "a", Access::keep);
  for (auto const& entry : std::filesystem::directory_iterator(directory.path())) {
    EXPECT_EQ(permissions(entry.path()), entry.path().filename() == "a" ? 0640U : 0600U);
  }
}

TEST(AtomicFile, a_file_of_another_user_stays_theirs) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can make files of another user";
  }
  constexpr uid_t nobody = 65534;
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  ASSERT_EQ(chown((directory.path() / "a").c_str(), nobody, nobody), 0);
  write_whole(directory.path() / "a", "new", Access::keep);
  struct stat status {};
  ASSERT_EQ(stat((directory.path() / "a").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, nobody);
}

TEST(AtomicFile, a_new_file_follows_the_umask) {
  test::TemporaryDirectory const directory;
  mode_t const old = umask(027);
  write_whole(directory.path() / "a", "new", Access::keep);
  umask(old);
  EXPECT_EQ(permissions(directory.path() / "a"), 0640U);
}

TEST(AtomicFile, owner_only_holds_also_for_a_file_that_was_open_to_all) {
  test::TemporaryDirectory const directory;
  directory.write("a", "old");
  std::filesystem::permissions(directory.path() / "a", std::filesystem::perms(0666));
  write_whole(directory.path() / "a", "new", Access::owner_only);
  EXPECT_EQ(permissions(directory.path() / "a"), 0600U);
}

TEST(AtomicFile, the_temporary_is_never_open_to_others) {
  test::TemporaryDirectory const directory;
  AtomicFile const file(directory.path() / "a", Access::owner_only);
  EXPECT_EQ(permissions(std::filesystem::directory_iterator(directory.path())->path()), 0600U);
}

TEST(AtomicFile, a_kept_link_stays_a_link) {
  test::TemporaryDirectory const directory;
  directory.write("target", "old");
  std::filesystem::create_symlink("target", directory.path() / "link");
  write_whole(directory.path() / "link", "new", Access::keep);
  EXPECT_TRUE(std::filesystem::is_symlink(directory.path() / "link"));
  EXPECT_EQ(directory.read("target"), "new");
}

TEST(AtomicFile, a_kept_link_to_nothing_stays_and_is_a_failure) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_symlink("missing", directory.path() / "link");
  EXPECT_FALSE(write_whole(directory.path() / "link", "new", Access::keep));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(std::filesystem::is_symlink(directory.path() / "link"));
  EXPECT_EQ(entries(directory), 1);
}

TEST(AtomicFile, a_kept_link_to_a_pipe_stays_and_is_a_failure) {
  test::TemporaryDirectory const directory;
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(ends[1]),
                                  directory.path() / "link");
  EXPECT_FALSE(write_whole(directory.path() / "link", "new", Access::keep));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(std::filesystem::is_symlink(directory.path() / "link"));
  close(ends[0]);
  close(ends[1]);
}

TEST(AtomicFile, private_content_does_not_follow_a_link) {
  test::TemporaryDirectory const directory;
  directory.write("target", "old");
  std::filesystem::create_symlink("target", directory.path() / "link");
  write_whole(directory.path() / "link", "new", Access::owner_only);
  EXPECT_FALSE(std::filesystem::is_symlink(directory.path() / "link"));
  EXPECT_EQ(directory.read("target"), "old");
}

TEST(AtomicFile, a_name_as_long_as_a_name_can_be_is_written) {
  test::TemporaryDirectory const directory;
  EXPECT_TRUE(write_whole(directory.path() / std::string(255, 'n'), "new", Access::keep));
}

TEST(AtomicFile, a_missing_directory_is_a_failure_with_a_reason) {
  test::TemporaryDirectory const directory;
  AtomicFile file(directory.path() / "missing" / "a", Access::keep);
  EXPECT_FALSE(file.write("new"));
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(file.error(), ENOENT);
}

TEST(AtomicFile, a_failure_is_in_errno_also_when_the_object_is_gone) {
  test::TemporaryDirectory const directory;
  EXPECT_FALSE(write_whole(directory.path() / "missing" / "a", "new", Access::keep));
  EXPECT_EQ(errno, ENOENT);
}

TEST(AtomicFile, a_directory_is_not_replaced) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "d");
  EXPECT_FALSE(write_whole(directory.path() / "d", "new", Access::keep));
  EXPECT_TRUE(std::filesystem::is_directory(directory.path() / "d"));
}

TEST(AtomicFile, a_pipe_is_not_replaced) {
  test::TemporaryDirectory const directory;
  ASSERT_EQ(mkfifo((directory.path() / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(write_whole(directory.path() / "pipe", "new", Access::owner_only));
  EXPECT_TRUE(std::filesystem::is_fifo(directory.path() / "pipe"));
}

TEST(AtomicFile, after_commit_no_more_is_taken) {
  test::TemporaryDirectory const directory;
  AtomicFile file(directory.path() / "a", Access::keep);
  file.write("one");
  ASSERT_TRUE(file.commit());
  EXPECT_FALSE(file.write("two"));
  EXPECT_EQ(directory.read("a"), "one");
}

TEST(ReadFile, reads_a_whole_file) {
  test::TemporaryDirectory const directory;
  std::string const text(100000, 'x');
  directory.write("a", text);
  std::string content = "old";
  EXPECT_TRUE(morvabs::read_file(directory.path() / "a", content, 1000000));
  EXPECT_EQ(content, text);
}

TEST(ReadFile, a_file_of_exactly_the_limit_is_read) {
  test::TemporaryDirectory const directory;
  directory.write("a", "12345");
  std::string content;
  EXPECT_TRUE(morvabs::read_file(directory.path() / "a", content, 5));
}

TEST(ReadFile, a_file_above_the_limit_is_not_read) {
  test::TemporaryDirectory const directory;
  directory.write("a", "123456");
  std::string content = "old";
  EXPECT_FALSE(morvabs::read_file(directory.path() / "a", content, 5));
  EXPECT_TRUE(content.empty());
}

TEST(ReadFile, the_reason_is_in_errno) {
  test::TemporaryDirectory const directory;
  directory.write("a", "123456");
  std::string content;
  EXPECT_FALSE(morvabs::read_file(directory.path() / "a", content, 5));
  EXPECT_EQ(errno, EFBIG);
  EXPECT_FALSE(morvabs::read_file(directory.path() / "missing", content, 5));
  EXPECT_EQ(errno, ENOENT);
}

TEST(ReadFile, a_file_that_the_system_makes_up_is_read) {
  std::string content;
  EXPECT_TRUE(morvabs::read_file("/proc/self/status", content, 1 << 20));
  EXPECT_NE(content.find("VmRSS"), std::string::npos);
}

TEST(ReadFile, an_endless_file_that_claims_no_size_is_bounded) {
  std::string content;
  EXPECT_FALSE(morvabs::read_file("/proc/self/status", content, 100));
}

}  // namespace
