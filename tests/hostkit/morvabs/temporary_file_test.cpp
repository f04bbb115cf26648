#include "morvabs/temporary_file.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/file_locks.h"
#include "morvabs/atomic_file.h"

#include "support/temporary_directory.h"

namespace {

using morvabs::AtomicFile;
using morvabs::make_temporary_file;
using morvabs::TemporaryFile;
using testing::ElementsAre;
using Access = AtomicFile::Access;

constexpr char const* left_name = ".morva-0123456789abcdef0123456789abcdef";

class TemporaryFileTest : public testing::Test {
 protected:
  std::string path(std::string const& name) const { return directory_.path() / name; }
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(directory_.path())) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  // The directory by a name that it was not looked through under yet.
  std::string directory() const {
    again_ += "./";
    return path("") + again_;
  }
  void write_another() const {
    AtomicFile file(directory() + "other", Access::keep);
    EXPECT_TRUE(file.write("other") && file.commit());
  }

  test::TemporaryDirectory directory_;

 private:
  mutable std::string again_;
};

using Leftover = TemporaryFileTest;

TEST_F(TemporaryFileTest, is_open_and_locked) {
  TemporaryFile const file = make_temporary_file(directory(), 0600);
  EXPECT_EQ(file.error, 0);
  EXPECT_EQ(::write(file.descriptor.get(), "x", 1), 1);
  morvabs::FileDescriptor const other(::open(file.path.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_NE(::flock(other.get(), LOCK_SH | LOCK_NB), 0);
}

TEST_F(TemporaryFileTest, stays_locked_when_it_is_closed_for_writing) {
  TemporaryFile file = make_temporary_file(directory(), 0600);
  file.descriptor = {};
  morvabs::FileDescriptor const other(::open(file.path.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_NE(::flock(other.get(), LOCK_SH | LOCK_NB), 0);
}

TEST_F(TemporaryFileTest, a_missing_directory_is_an_error) {
  EXPECT_EQ(make_temporary_file(path("missing/"), 0600).error, ENOENT);
}

TEST_F(Leftover, of_a_killed_writer_is_removed_by_the_next) {
  pid_t const writer = fork();
  if (writer == 0) {
    AtomicFile file(path("a"), Access::owner_only);
    file.write(std::string(100000, 'x'));
    kill(getpid(), SIGKILL);
  }
  waitpid(writer, nullptr, 0);
  ASSERT_EQ(names().size(), 1U);
  write_another();
  EXPECT_THAT(names(), ElementsAre("other"));
}

TEST_F(Leftover, is_removed_before_something_is_written) {
  directory_.write(left_name, "left");
  AtomicFile const file(directory() + "a", Access::keep);
  EXPECT_FALSE(std::filesystem::exists(path(left_name)));
}

TEST_F(Leftover, is_not_looked_for_again_at_once) {
  AtomicFile(path("a"), Access::keep);
  directory_.write(left_name, "left");
  AtomicFile(path("b"), Access::keep);
  EXPECT_THAT(names(), ElementsAre(left_name));
}

TEST_F(Leftover, is_not_what_somebody_writes) {
  AtomicFile file(path("a"), Access::keep);
  file.write("new");
  write_another();
  EXPECT_TRUE(file.commit());
  EXPECT_EQ(directory_.read("a"), "new");
}

TEST_F(Leftover, is_nothing_with_a_name_of_another_form) {
  std::vector<std::string> const others = {".morva-", ".morva-0123456789ABCDEF0123456789ABCDEF",
                                           ".morva-0123456789abcdef0123456789abcdef.txt",
                                           ".morva-notes"};
  for (std::string const& name : others) {
    directory_.write(name.c_str(), "mine");
  }
  AtomicFile const file(directory() + "a", Access::keep);
  for (std::string const& name : others) {
    EXPECT_TRUE(std::filesystem::exists(path(name))) << name;
  }
}

TEST_F(Leftover, is_no_link) {
  directory_.write("mine", "mine");
  std::filesystem::create_symlink("mine", path(left_name));
  write_another();
  EXPECT_THAT(names(), ElementsAre(left_name, "mine", "other"));
}

TEST_F(Leftover, is_no_directory) {
  std::filesystem::create_directory(path(left_name));
  write_another();
  EXPECT_THAT(names(), ElementsAre(left_name, "other"));
}

TEST_F(Leftover, is_no_pipe) {
  ASSERT_EQ(mkfifo(path(left_name).c_str(), 0600), 0);
  write_another();
  EXPECT_THAT(names(), ElementsAre(left_name, "other"));
}

TEST_F(Leftover, is_nothing_of_another_user) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can make files of another user";
  }
  constexpr uid_t nobody = 65534;
  directory_.write(left_name, "theirs");
  ASSERT_EQ(chown(path(left_name).c_str(), nobody, nobody), 0);
  write_another();
  EXPECT_THAT(names(), ElementsAre(left_name, "other"));
}

TEST_F(Leftover, of_one_who_replaces_a_file_of_another_user_is_removed) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can make files of another user";
  }
  constexpr uid_t nobody = 65534;
  directory_.write("a", "theirs");
  ASSERT_EQ(chown(path("a").c_str(), nobody, nobody), 0);
  pid_t const writer = fork();
  if (writer == 0) {
    AtomicFile const file(path("a"), Access::keep);
    kill(getpid(), SIGKILL);
  }
  waitpid(writer, nullptr, 0);
  ASSERT_EQ(names().size(), 2U);
  write_another();
  EXPECT_THAT(names(), ElementsAre("a", "other"));
}

TEST(FileLocks, of_a_network_file_system_may_be_those_of_one_machine) {
  EXPECT_FALSE(morvabs::type_sees_all_locks(NFS_SUPER_MAGIC));
}

TEST(FileLocks, of_a_file_system_of_another_process_may_be_those_of_one_machine) {
  EXPECT_FALSE(morvabs::type_sees_all_locks(FUSE_SUPER_MAGIC));
}

TEST(FileLocks, a_number_with_its_sign_is_the_same_file_system) {
  EXPECT_FALSE(morvabs::type_sees_all_locks(static_cast<unsigned long>(-11317950L)));
}

TEST(FileLocks, of_a_file_system_in_memory_are_seen_by_all) {
  EXPECT_TRUE(morvabs::type_sees_all_locks(TMPFS_MAGIC));
}

// Each takes what it finds for leftovers while the others write.
TEST_F(Leftover, writers_side_by_side_do_not_lose_their_files) {
  constexpr int processes = 4;
  constexpr int writes = 100;
  std::vector<pid_t> writers;
  for (int number = 0; number < processes; ++number) {
    writers.push_back(fork());
    if (writers.back() == 0) {
      bool is_well = true;
      for (int i = 0; i < writes; ++i) {
        AtomicFile file(directory() + "a", Access::keep);
        is_well = file.write(std::string(5000, static_cast<char>('a' + number))) && file.commit() &&
                  is_well;
      }
      _exit(is_well ? 0 : 1);
    }
  }
  for (pid_t const writer : writers) {
    int status = 0;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_THAT(names(), ElementsAre("a"));
  std::string const content = directory_.read("a");
  EXPECT_EQ(content, std::string(5000, content.front()));
}

}  // namespace
