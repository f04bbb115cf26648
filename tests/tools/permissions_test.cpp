#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "documents/work_directory.h"
#include "tools/boxes_program.h"

namespace {

namespace fs = std::filesystem;

/// Runs under the umask that lets everybody do everything, or under that which lets nobody else do
/// anything.
class Permissions : public test::BoxesProgram, public testing::WithParamInterface<mode_t> {
 protected:
  Permissions() : old_(umask(GetParam())) {}
  ~Permissions() override { umask(old_); }

  static mode_t mode(fs::path const& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
  }
  /// What is written can be written by all but others, less what the umask takes away.
  static mode_t expected_of_file() { return 0664U & ~GetParam(); }
  static mode_t expected_of_directory() { return 0775U & ~GetParam(); }
  static void expect_all_below(fs::path const& folder) {
    for (auto const& entry : fs::recursive_directory_iterator(folder)) {
      EXPECT_EQ(mode(entry.path()),
                entry.is_directory() ? expected_of_directory() : expected_of_file())
          << entry.path();
    }
  }

 private:
  mode_t old_;
};

TEST_P(Permissions, of_boxes_and_index) {
  test::EnvironmentVariable const inside("MORVA_BOX_PATH", box_file("new/boxes"));
  learn("subjects");
  EXPECT_EQ(run({"box", "add", box_file("new/boxes/subjects.box"), "--id", "other"}).status, 0);
  EXPECT_TRUE(fs::exists(box_file("new/boxes/other.box")));
  expect_all_below(boxes.path());
}

TEST_P(Permissions, of_boxes_and_index_stay_as_they_were) {
  learn("subjects");
  for (auto const& entry : fs::directory_iterator(boxes.path())) {
    fs::permissions(entry.path(), fs::perms(0640));
  }
  learn("subjects", {"--force"});
  for (auto const& entry : fs::directory_iterator(boxes.path())) {
    EXPECT_EQ(mode(entry.path()), 0640U) << entry.path();
  }
}

TEST_P(Permissions, of_class_lists) {
  std::string const folder = path("new/classes");
  EXPECT_EQ(run({"cluster", samples(), "-m", "kmeans", "-k", "2", "-o", folder}).status, 0);
  EXPECT_EQ(mode(folder), expected_of_directory());
  EXPECT_FALSE(fs::is_empty(folder));
  expect_all_below(folder);
}

TEST_P(Permissions, of_the_log) {
  test::EnvironmentVariable const level("MORVA_LOG_LEVEL", "4");
  test::EnvironmentVariable const log("MORVA_LOG_FILE", path("log"));
  run({"features", sample("missing.docx")});
  EXPECT_EQ(mode(path("log")), expected_of_file());
}

TEST_P(Permissions, of_the_working_directory) {
  test::EnvironmentVariable const inside("MORVA_RUN_PATH", path("new/run"));
  tool::WorkDirectory const directory;
  EXPECT_EQ(mode(directory.path()), 0700U);
}

INSTANTIATE_TEST_SUITE_P(Umasks, Permissions, testing::Values(0, 077), [](auto const& umask) {
  return umask.param == 0 ? std::string("open") : std::string("closed");
});

}  // namespace
