#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shards/record_coding.h"
#include "shards/shard_layout.h"
#include "shards/shard_record.h"
#include "tools/shard_directory.h"

namespace {

using test::many;
using test::record_of;
using tool::ShardRecord;

TEST(RecordOfShard, documents_stand_in_the_order_in_which_folders_are_walked) {
  EXPECT_TRUE(tool::path_before("a/b", "a-b"));
  EXPECT_TRUE(tool::path_before("a", "a/b"));
  EXPECT_TRUE(tool::path_before("z", "合"));
  EXPECT_FALSE(tool::path_before("a", "a"));
}

TEST(RecordOfShard, repeated_words_do_not_make_much_of_little) {
  std::vector<std::string> words(170, std::string(100000, 'x'));
  EXPECT_FALSE(tool::is_storable(record_of("a", words)));
  tool::RecordEncoder encoder;
  encoder.add(record_of("a", words));
  tool::RecordDecoder decoder(encoder.bytes());
  ShardRecord record;
  EXPECT_FALSE(decoder.take(record));
}

TEST(RecordOfShard, a_block_has_no_records_behind_its_end) {
  tool::RecordEncoder encoder;
  std::size_t fitting = 0;
  std::vector<ShardRecord> const records = many(400);
  for (ShardRecord const& record : records) {
    fitting += encoder.bytes().size() < tool::block_size ? 1U : 0U;
    encoder.add(record);
  }
  ASSERT_LT(fitting, records.size());
  tool::RecordDecoder decoder(encoder.bytes());
  ShardRecord record;
  for (std::size_t i = 0; i < fitting; ++i) {
    ASSERT_TRUE(decoder.take(record)) << i;
  }
  EXPECT_FALSE(decoder.take(record));
}

TEST(RecordOfShard, a_text_has_words) {
  ShardRecord record = record_of("a", {});
  EXPECT_FALSE(tool::is_storable(record));
  record.outcome = "no words";
  EXPECT_TRUE(tool::is_storable(record));
}

TEST(RecordOfShard, a_path_has_no_more_bytes_than_a_system_takes) {
  EXPECT_TRUE(tool::is_storable(record_of(std::string(4096, 'x'))));
  EXPECT_FALSE(tool::is_storable(record_of(std::string(4097, 'x'))));
}

}  // namespace
