#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/HDirSnap.h"
#include "host/Orlec/IFile.h"
#include "host/native_path.h"

#include "support/temporary_directory.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Collector : public HDirSnapCallback {
 public:
  std::vector<HDirSnapEntry> entries;
  int result = 0;

  int on_snap_file(HDirSnapEntry const& entry) override {
    entries.push_back(entry);
    return result;
  }
  std::vector<HString> names() const {
    std::vector<HString> found;
    for (HDirSnapEntry const& entry : entries) {
      found.push_back(entry.str_name);
    }
    return found;
  }
};

Collector walk(HString const& path, bool recursive = true, bool with_files = true, int result = 0) {
  Collector collector;
  collector.result = result;
  HDirSnap snap;
  snap.mb_recursive = recursive;
  snap.set_callback(&collector, with_files);
  snap.set_file(path);
  snap.snap();
  return collector;
}

HString path_of(test::TemporaryDirectory const& directory) {
  return HString(directory.path().c_str());
}

TEST(HDirSnap, reports_in_code_point_order_with_a_subfolders_entries_behind_it) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directories(directory.path() / "b" / "inner");
  for (char const* name : {"c", "a", "Z", "\xE4\xB8\xAD", "b/2", "b/1", "b/inner/x"}) {
    directory.write(name, "");
  }
  EXPECT_THAT(walk(path_of(directory)).names(),
              ElementsAre(L"Z", L"a", L"b", L"1", L"2", L"inner", L"x", L"c", L"中"));
}

TEST(HDirSnap, an_entry_has_path_name_and_kind) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "d");
  HString const file = directory.write("d/f", "");
  Collector const found = walk(path_of(directory));
  ASSERT_EQ(found.entries.size(), 2U);
  EXPECT_TRUE(found.entries[0].mb_dir);
  EXPECT_FALSE(found.entries[1].mb_dir);
  EXPECT_EQ(found.entries[1].str_path, file);
  EXPECT_FALSE(found.entries[0].mb_skip || found.entries[1].mb_skip);
}

TEST(HDirSnap, a_separator_at_the_end_is_not_doubled) {
  test::TemporaryDirectory const directory;
  HString const file = directory.write("f", "");
  Collector const found = walk(path_of(directory) + L"/");
  ASSERT_EQ(found.entries.size(), 1U);
  EXPECT_EQ(found.entries[0].str_path, file);
}

TEST(HDirSnap, stays_in_the_folder_unless_told) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "d");
  directory.write("d/f", "");
  EXPECT_THAT(walk(path_of(directory), false).names(), ElementsAre(L"d"));
}

TEST(HDirSnap, reports_folders_alone_on_demand) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "d");
  directory.write("f", "");
  EXPECT_THAT(walk(path_of(directory), true, false).names(), ElementsAre(L"d"));
}

TEST(HDirSnap, a_missing_directory_reports_nothing) {
  EXPECT_THAT(walk(L"/no/such/directory").names(), IsEmpty());
  EXPECT_THAT(walk(HString()).names(), IsEmpty());
}

TEST(HDirSnap, a_regular_file_reports_itself) {
  test::TemporaryDirectory const directory;
  HString const file = directory.write("f.txt", "");
  Collector const found = walk(file);
  ASSERT_EQ(found.entries.size(), 1U);
  EXPECT_EQ(found.entries[0].str_path, file);
  EXPECT_EQ(found.entries[0].str_name, HString(L"f.txt"));
}

TEST(HDirSnap, special_files_and_dead_links_are_to_be_skipped) {
  test::TemporaryDirectory const directory;
  ASSERT_EQ(mkfifo((directory.path() / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("nowhere", directory.path() / "dead");
  Collector const found = walk(path_of(directory));
  ASSERT_EQ(found.entries.size(), 2U);
  EXPECT_TRUE(found.entries[0].mb_skip && found.entries[1].mb_skip);
}

TEST(HDirSnap, a_link_to_a_directory_is_reported_but_not_entered) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_symlink(".", directory.path() / "loop");
  EXPECT_THAT(walk(path_of(directory)).names(), ElementsAre(L"loop"));
}

TEST(HDirSnap, a_link_as_the_start_is_followed) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "d");
  directory.write("d/f", "");
  std::filesystem::create_symlink("d", directory.path() / "link");
  EXPECT_THAT(walk(directory / "link").names(), ElementsAre(L"f"));
}

TEST(HDirSnap, the_callback_can_end_the_walk) {
  test::TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.path() / "a");
  directory.write("a/1", "");
  directory.write("b", "");
  EXPECT_THAT(walk(path_of(directory), true, true, 1).names(), ElementsAre(L"a"));
}

TEST(HDirSnap, goes_128_levels_deep_and_no_further) {
  test::TemporaryDirectory const directory;
  std::string path;
  for (int i = 0; i < 140; ++i) {
    path += "d/";
  }
  std::filesystem::create_directories(directory.path() / path);
  EXPECT_EQ(walk(path_of(directory)).entries.size(), 128U);
}

TEST(HDirSnap, a_file_with_a_name_that_is_no_utf8_can_be_opened) {
  test::TemporaryDirectory const directory;
  directory.write("\xB1\xA8\xB8\xE6.txt", "x");
  Collector const found = walk(path_of(directory));
  ASSERT_EQ(found.entries.size(), 1U);
  EXPECT_TRUE(Orlec::IFile(found.entries[0].str_path, false).IsOpen());
}

TEST(HDirSnap, without_a_callback_it_does_nothing) {
  HDirSnap snap;
  snap.set_file(L"/");
  snap.snap();
}

}  // namespace
