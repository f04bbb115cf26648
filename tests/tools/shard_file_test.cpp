#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shards/shard_error.h"
#include "shards/shard_reader.h"
#include "shards/shard_writer.h"
#include "tools/shard_directory.h"

namespace {

using test::failed;
using test::many;
using test::origin;
using test::record_of;
using testing::HasSubstr;
using tool::ShardRecord;

class Shard : public test::ShardDirectory {
 protected:
  static std::vector<ShardRecord> read_all(std::string const& file) {
    tool::ShardReader reader(file);
    std::vector<ShardRecord> records;
    for (ShardRecord record; reader.next(record);) {
      records.push_back(record);
    }
    return records;
  }
  /// What is said of the file; empty where it is a shard.
  std::string refusal(std::string const& name) const {
    try {
      read_all(path(name));
    } catch (tool::ShardError const& error) {
      return error.what();
    }
    return {};
  }
};

TEST_F(Shard, records_come_out_as_they_went_in_to_the_last_bit) {
  std::vector<ShardRecord> records = many(1500);
  constexpr double least = std::numeric_limits<double>::denorm_min();
  constexpr double most = std::numeric_limits<double>::max();
  ShardRecord odd = record_of(std::string("zz\xFF\n") + std::string(4000, 'x'));
  odd.words = {"", std::string(3, '\0'), "a", "a", "a"};
  odd.counts = {0, std::numeric_limits<std::int32_t>::max(), 1, 1, 1};
  odd.weights = {-0.0, least, most, -most, 0.1};
  odd.outcome = "limit reached";
  odd.reason = "it is too large";
  odd.dna.clear();
  records.push_back(odd);
  tool::WrittenShard const written = write("a.shard", records);
  EXPECT_EQ(written.totals.documents, 1501U);
  EXPECT_EQ(written.totals.failed, 30U);
  EXPECT_EQ(written.totals.partial, 1U);
  EXPECT_TRUE(read_all(path("a.shard")) == records);
  EXPECT_EQ(tool::ShardReader(path("a.shard")).last_path(), odd.path);
  EXPECT_FALSE(std::filesystem::exists(path("a.shard.new")));
}

TEST_F(Shard, its_bytes_stay_as_they_are_described) {
  write("a.shard", {record_of("d/a", {"x"}), failed("d/b")}, "by");
  std::string expected("\211SHD\r\n\032\n\1\0\0\0\2\0\0\0", 16);
  expected += bytes("a.shard").substr(16, 8) + "by";
  std::string block("\0\3d/a\200\0\1\0\1x\0\0", 13);
  block += "\x01\x23\x45\x67\x89\xAB\xCD\xEF\xFE\xDC\xBA\x98\x76\x54\x32\x10";
  block += std::string("\2\1b\2\24", 5) + "a password is needed" + std::string(1, '\0');
  std::string const head = std::string{static_cast<char>(block.size())} +
                           std::string("\0\0\0\2\0\0\0", 7) + bytes("a.shard").substr(34, 8);
  expected += head + block + head;
  expected += std::string("\2\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 24);
  expected += std::string("\1\0\0\0\0\0\0\0", 8) +
              std::string{static_cast<char>(26 + 16 + block.size())} + std::string(7, '\0');
  expected += bytes("a.shard").substr(expected.size(), 8) + "\nSHDEND\n";
  EXPECT_EQ(bytes("a.shard"), expected);
}

TEST_F(Shard, an_empty_one_is_one) {
  write("a", {});
  EXPECT_TRUE(read_all(path("a")).empty());
  EXPECT_EQ(tool::ShardReader(path("a")).last_path(), std::nullopt);
}

TEST_F(Shard, each_byte_that_is_other_is_found) {
  write("a", many(3, 3));
  std::string const whole = bytes("a");
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string changed = whole;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    put("b", changed);
    ASSERT_NE(refusal("b"), "") << i;
  }
}

TEST_F(Shard, each_end_that_is_missing_is_found) {
  write("a", many(3, 3));
  std::string const whole = bytes("a");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    put("b", whole.substr(0, size));
    ASSERT_NE(refusal("b"), "") << size;
  }
  put("b", whole + whole);
  EXPECT_NE(refusal("b"), "");
  put("b", whole.substr(0, whole.size() / 2));
  EXPECT_THAT(refusal("b"), HasSubstr("b: the end of the shard is missing; copy it again"));
}

TEST_F(Shard, what_is_none_is_told) {
  put("a", "text");
  EXPECT_THAT(refusal("a"), HasSubstr("a: no shard; morvaai extract makes them"));
  EXPECT_THAT(refusal("absent"), HasSubstr("absent: No such file or directory"));
  EXPECT_THAT(refusal("."), HasSubstr("a folder, no shard"));
}

TEST_F(Shard, what_is_no_shard_is_never_replaced) {
  put("a", "a document");
  EXPECT_THROW(write("a", {}), tool::ShardError);
  put("b.new", "a document");
  EXPECT_THROW(write("b", {}), tool::ShardError);
  EXPECT_EQ(bytes("a") + bytes("b.new"), "a documenta document");
}

TEST_F(Shard, an_old_one_stays_until_the_new_one_is_whole) {
  write("a", {record_of("x")});
  std::string const old = bytes("a");
  {
    tool::ShardWriter writer(path("a"), origin);
    writer.add(record_of("y"));
    EXPECT_THROW(tool::ShardWriter(path("a"), origin), tool::ShardError);
  }
  EXPECT_EQ(bytes("a"), old);
  EXPECT_FALSE(std::filesystem::exists(path("a.new")));
}

TEST_F(Shard, records_out_of_order_are_refused) {
  tool::ShardWriter writer(path("a"), origin);
  writer.add(record_of("b"));
  EXPECT_THROW(writer.add(record_of("b")), tool::ShardError);
  EXPECT_THROW(writer.add(record_of("a")), tool::ShardError);
}

}  // namespace
