#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shards/extract_journal.h"
#include "shards/shard_error.h"
#include "tools/shard_directory.h"

namespace {

using test::failed;
using test::origin;
using test::record_of;
using testing::ElementsAre;
using testing::HasSubstr;
using tool::ShardRecord;

class Journal : public test::ShardDirectory {
 protected:
  static constexpr tool::FileStamp stamp = {1, 2, 3};

  std::vector<std::string> paths_in(std::string const& name) const {
    tool::ExtractJournal journal(path(name), origin);
    std::vector<std::string> paths;
    journal.read([&](ShardRecord const& record, tool::FileStamp const& found, std::uint64_t place) {
      EXPECT_EQ(found, stamp);
      EXPECT_EQ(journal.at(place), record);
      paths.push_back(record.path);
    });
    return paths;
  }
  void begin(std::string const& name) const {
    tool::ExtractJournal journal(path(name), origin);
    journal.add(record_of("b"), stamp);
    journal.add(failed("a"), stamp);
  }
  /// What is said on standard error when it is opened.
  std::string warning_of(std::string const& name, std::string const& by = origin) const {
    testing::internal::CaptureStderr();
    tool::ExtractJournal const journal(path(name), by);
    return testing::internal::GetCapturedStderr();
  }
};

TEST_F(Journal, keeps_what_is_done) {
  begin("j");
  EXPECT_THAT(paths_in("j"), ElementsAre("b", "a"));
}

TEST_F(Journal, a_tail_that_was_not_written_whole_is_cut_off) {
  begin("j");
  std::string const whole = bytes("j");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    put("k", whole.substr(0, size));
    ASSERT_LT(paths_in("k").size(), 2U) << size;
  }
  put("k", whole.substr(0, whole.size() - 3));
  EXPECT_THAT(paths_in("k"), ElementsAre("b"));
  {
    tool::ExtractJournal journal(path("k"), origin);
    journal.read([](auto const&, auto const&, auto) {});
    journal.add(failed("a"), stamp);
  }
  EXPECT_TRUE(bytes("k") == whole);
}

TEST_F(Journal, is_for_one_process_at_a_time) {
  tool::ExtractJournal const journal(path("j"), origin);
  EXPECT_THROW(tool::ExtractJournal(path("j"), origin), tool::ShardError);
}

TEST_F(Journal, begins_anew_for_another_dictionary) {
  begin("j");
  EXPECT_THAT(warning_of("j", "morvaai 2"),
              HasSubstr("j: was begun with another version or dictionary; all is read anew\n"));
  EXPECT_TRUE(paths_in("j").empty());
}

TEST_F(Journal, begins_anew_with_a_warning_where_its_header_is_damaged) {
  begin("j");
  std::string damaged = bytes("j");
  damaged[20] = static_cast<char>(damaged[20] ^ 1);
  put("j", damaged);
  EXPECT_THAT(warning_of("j"), HasSubstr("j: its header is damaged, or of another version"));
  EXPECT_TRUE(paths_in("j").empty());
}

TEST_F(Journal, begins_anew_with_a_warning_where_its_format_is_a_later_one) {
  begin("j");
  std::string later = bytes("j");
  ++later[8];
  put("j", later);
  EXPECT_THAT(warning_of("j"), HasSubstr("j: its header is damaged, or of another version"));
  EXPECT_TRUE(paths_in("j").empty());
}

TEST_F(Journal, begins_without_a_warning_where_there_was_none) {
  put("empty", "");
  EXPECT_EQ(warning_of("new") + warning_of("empty"), "");
}

TEST_F(Journal, leaves_a_file_that_is_none) {
  put("j", "a document");
  EXPECT_THROW(tool::ExtractJournal(path("j"), origin), tool::ShardError);
  EXPECT_EQ(bytes("j"), "a document");
}

}  // namespace
