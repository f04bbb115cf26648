#include <algorithm>
#include <csignal>
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "documents/failure.h"
#include "shards/document_records.h"
#include "shards/shard_inputs.h"
#include "tools/shard_directory.h"

namespace {

using test::failed;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;
using tool::ShardRecord;

TEST(FailedRecord, is_storable_whatever_a_worker_says) {
  for (std::string const& problem : {std::string("text"), std::string(20U << 20U, 'x')}) {
    ShardRecord const record = tool::failed_record("a", problem);
    EXPECT_TRUE(tool::is_storable(record));
    EXPECT_EQ(record.outcome, "failed");
    EXPECT_EQ(record.reason, tool::senseless_answer);
  }
  EXPECT_EQ(tool::failed_record("a", "encrypted: a password is needed"), failed("a"));
}

/// Ends the worker processes of this one.
void kill_workers() {
  std::string const self = std::to_string(getpid());
  std::ifstream children("/proc/" + self + "/task/" + self + "/children");
  for (pid_t child = 0; children >> child;) {
    kill(child, SIGKILL);
  }
}

using ExtractRecords = test::ShardDirectory;

TEST_F(ExtractRecords, a_document_whose_worker_was_killed_is_read_again) {
  std::vector<HString> files;
  for (std::string const name : {"a", "b", "c", "d"}) {
    put(name, "");
    files.emplace_back(path(name).c_str());
  }
  std::vector<std::size_t> order;
  testing::internal::CaptureStderr();
  tool::extract_records(files, 1, [&](std::size_t index, ShardRecord const& record) {
    if (order.empty()) {
      kill_workers();
    }
    order.push_back(index);
    EXPECT_THAT(record.reason, Not(HasSubstr("signal")));
  });
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("read again alone: 1\n"));
  EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
  EXPECT_THAT(order, UnorderedElementsAre(0, 1, 2, 3));
}

TEST(Part, is_told_by_two_numbers) {
  EXPECT_TRUE(tool::part_of("2/8"));
  for (char const* wrong : {"", "2", "0/8", "9/8", "2/8/1", "-1/8", "a/b", "1/9999999", "2/ 8"}) {
    EXPECT_FALSE(tool::part_of(wrong)) << wrong;
  }
}

}  // namespace
