#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "documents/failure.h"
#include "shards/document_records.h"
#include "shards/extract_journal.h"
#include "shards/shard_error.h"
#include "shards/shard_inputs.h"
#include "shards/shard_merge.h"
#include "shards/shard_reader.h"
#include "shards/shard_writer.h"
#include "support/temporary_directory.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;
using tool::ShardRecord;

constexpr char const* origin = "morvaai 1, morvajieba.dict 00";

ShardRecord record_of(std::string path, std::vector<std::string> words = {"harbour", "合同"}) {
  ShardRecord record;
  record.path = std::move(path);
  record.outcome = "text";
  record.words = std::move(words);
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    record.counts.push_back(static_cast<std::int32_t>(i * 7));
    record.weights.push_back(1.0 / static_cast<double>(i + 1));
  }
  record.dna = "0123456789ABCDEFFEDCBA9876543210";
  return record;
}

ShardRecord failed(std::string path) {
  ShardRecord record;
  record.path = std::move(path);
  record.outcome = "encrypted";
  record.reason = "a password is needed";
  return record;
}

/// Records in order; a thousand need several blocks.
std::vector<ShardRecord> many(std::size_t count, int word_count = 60) {
  std::mt19937 random(7);
  std::vector<ShardRecord> records;
  for (std::size_t i = 0; i < count; ++i) {
    std::vector<std::string> words;
    for (int k = 0; k < word_count; ++k) {
      words.push_back("word" + std::to_string(random() % 5000));
    }
    ShardRecord record =
        record_of("folder/" + std::to_string(100000 + i) + ".txt", std::move(words));
    for (double& weight : record.weights) {
      weight = std::generate_canonical<double, 53>(random);
    }
    records.push_back(i % 50 == 9 ? failed(record.path) : std::move(record));
  }
  return records;
}

class Shard : public testing::Test {
 protected:
  std::string path(std::string const& name) const { return (directory.path() / name).string(); }
  tool::WrittenShard write(std::string const& name, std::vector<ShardRecord> const& records,
                           std::string const& by = origin) const {
    tool::ShardWriter writer(path(name), by);
    for (ShardRecord const& record : records) {
      writer.add(record);
    }
    return writer.finish();
  }
  static std::vector<ShardRecord> read_all(std::string const& file) {
    tool::ShardReader reader(file);
    std::vector<ShardRecord> records;
    for (ShardRecord record; reader.next(record);) {
      records.push_back(record);
    }
    return records;
  }
  std::string bytes(std::string const& name) const { return directory.read(name.c_str()); }
  void put(std::string const& name, std::string const& content) const {
    directory.write(name.c_str(), content);
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

  test::TemporaryDirectory directory;
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

TEST_F(Shard, any_split_merged_in_any_order_gives_the_same_bytes) {
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

TEST_F(Shard, an_empty_one_is_one) {
  write("a", {});
  EXPECT_TRUE(read_all(path("a")).empty());
  EXPECT_EQ(tool::ShardReader(path("a")).last_path(), std::nullopt);
}

TEST_F(Shard, documents_stand_in_the_order_in_which_folders_are_walked) {
  EXPECT_TRUE(tool::path_before("a/b", "a-b"));
  EXPECT_TRUE(tool::path_before("a", "a/b"));
  EXPECT_TRUE(tool::path_before("z", "合"));
  EXPECT_FALSE(tool::path_before("a", "a"));
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

TEST_F(Shard, those_of_other_extractions_do_not_go_together) {
  write("a", {record_of("a")});
  write("b", {record_of("b")}, "morvaai 2");
  EXPECT_THROW(merge({"a", "b"}, "c"), tool::ShardError);
  EXPECT_FALSE(std::filesystem::exists(path("c")));
}

TEST_F(Shard, a_document_with_two_records_is_an_error) {
  write("a", {record_of("x")});
  ShardRecord other = record_of("x");
  other.weights[1] = std::nextafter(other.weights[1], 0.0);
  write("b", {other});
  EXPECT_THROW(merge({"a", "b"}, "c"), tool::ShardError);
}

TEST_F(Shard, the_folder_of_all_documents_is_found) {
  write("a", {record_of("c/a/1"), record_of("c/a/2")});
  write("b", {record_of("c/ab/1")});
  EXPECT_EQ(tool::MergedShards({path("a")}).common_folder(), "c/a/");
  EXPECT_EQ(tool::MergedShards({path("a"), path("b")}).common_folder(), "c/");
  write("b", {record_of("d")});
  EXPECT_EQ(tool::MergedShards({path("a"), path("b")}).common_folder(), "");
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

TEST_F(Shard, repeated_words_do_not_make_much_of_little) {
  std::vector<std::string> words(170, std::string(100000, 'x'));
  EXPECT_FALSE(tool::is_storable(record_of("a", words)));
  tool::RecordEncoder encoder;
  encoder.add(record_of("a", words));
  tool::RecordDecoder decoder(encoder.bytes());
  ShardRecord record;
  EXPECT_FALSE(decoder.take(record));
}

TEST_F(Shard, a_block_has_no_records_behind_its_end) {
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

TEST_F(Shard, a_text_has_words) {
  ShardRecord record = record_of("a", {});
  EXPECT_FALSE(tool::is_storable(record));
  record.outcome = "no words";
  EXPECT_TRUE(tool::is_storable(record));
}

TEST_F(Shard, a_path_has_no_more_bytes_than_a_system_takes) {
  EXPECT_TRUE(tool::is_storable(record_of(std::string(4096, 'x'))));
  EXPECT_FALSE(tool::is_storable(record_of(std::string(4097, 'x'))));
}

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

TEST_F(Shard, a_document_whose_worker_was_killed_is_read_again) {
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

class Journal : public Shard {
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
  testing::internal::CaptureStderr();
  tool::ExtractJournal(path("j"), "morvaai 2");
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              HasSubstr("was begun with another version or dictionary"));
  EXPECT_TRUE(paths_in("j").empty());
}

TEST_F(Journal, leaves_a_file_that_is_none) {
  put("j", "a document");
  EXPECT_THROW(tool::ExtractJournal(path("j"), origin), tool::ShardError);
  EXPECT_EQ(bytes("j"), "a document");
}

TEST(Part, is_told_by_two_numbers) {
  EXPECT_TRUE(tool::part_of("2/8"));
  for (char const* wrong : {"", "2", "0/8", "9/8", "2/8/1", "-1/8", "a/b", "1/9999999", "2/ 8"}) {
    EXPECT_FALSE(tool::part_of(wrong)) << wrong;
  }
}

}  // namespace
