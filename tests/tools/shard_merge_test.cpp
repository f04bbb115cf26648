#include "shards/shard_merge.h"

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shards/shard_error.h"
#include "shards/shard_inputs.h"
#include "shards/shard_writer.h"
#include "tools/shard_directory.h"

namespace {

using test::many;
using test::record_of;
using tool::ShardRecord;

class MergedShards : public test::ShardDirectory {
 protected:
  void merge(std::vector<std::string> const& names, std::string const& into) const {
    std::vector<std::string> paths;
    for (std::string const& name : names) {
      paths.push_back(path(name));
    }
    tool::MergedShards merged(paths);
    tool::ShardWriter writer(path(into), merged.origin());
    merged.take_all([&](ShardRecord const& record) { writer.add(record); });
    writer.finish();
  }
};

TEST_F(MergedShards, any_split_merged_in_any_order_gives_the_same_bytes) {
  std::vector<ShardRecord> const records = many(1000);
  write("all", records);
  std::vector<std::vector<ShardRecord>> parts(3);
  for (ShardRecord const& record : records) {
    for (std::uint64_t i = 0; i < 3; ++i) {
      if (tool::is_in_part(record.path, {i + 1, 3})) {
        parts[i].push_back(record);
      }
    }
  }
  EXPECT_EQ(parts[0].size() + parts[1].size() + parts[2].size(), records.size());
  write("1", parts[0]);
  write("2", parts[1]);
  write("3", parts[2]);
  write("none", {});
  merge({"3", "none", "1"}, "31");
  merge({"31", "2", "2"}, "whole");
  EXPECT_TRUE(bytes("whole") == bytes("all"));
}

TEST_F(MergedShards, those_of_other_origins_do_not_go_together) {
  write("a", {record_of("a")});
  write("b", {record_of("b")}, "morvaai 2");
  EXPECT_THROW(merge({"a", "b"}, "c"), tool::ShardError);
  EXPECT_FALSE(std::filesystem::exists(path("c")));
}

TEST_F(MergedShards, a_document_with_two_records_is_an_error) {
  write("a", {record_of("x")});
  ShardRecord other = record_of("x");
  other.weights[1] = std::nextafter(other.weights[1], 0.0);
  write("b", {other});
  EXPECT_THROW(merge({"a", "b"}, "c"), tool::ShardError);
}

TEST_F(MergedShards, the_folder_of_all_documents_is_found) {
  write("a", {record_of("c/a/1"), record_of("c/a/2")});
  write("b", {record_of("c/ab/1")});
  EXPECT_EQ(tool::MergedShards({path("a")}).common_folder(), "c/a/");
  EXPECT_EQ(tool::MergedShards({path("a"), path("b")}).common_folder(), "c/");
  write("b", {record_of("d")});
  EXPECT_EQ(tool::MergedShards({path("a"), path("b")}).common_folder(), "");
}

}  // namespace
