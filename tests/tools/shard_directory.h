#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "shards/shard_record.h"
#include "shards/shard_writer.h"
#include "support/temporary_directory.h"

namespace test {

/// By what the records are said to be made.
inline constexpr char const* origin = "morvaai 1, morvajieba.dict 00";

/// That of a document that was read to its end.
inline tool::ShardRecord record_of(std::string path,
                                   std::vector<std::string> words = {"harbour", "合同"}) {
  tool::ShardRecord record;
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

/// That of an encrypted document.
inline tool::ShardRecord failed(std::string path) {
  tool::ShardRecord record;
  record.path = std::move(path);
  record.outcome = "encrypted";
  record.reason = "a password is needed";
  return record;
}

/// Records in order; a thousand need several blocks.
inline std::vector<tool::ShardRecord> many(std::size_t count, int word_count = 60) {
  std::mt19937 random(7);
  std::vector<tool::ShardRecord> records;
  for (std::size_t i = 0; i < count; ++i) {
    std::vector<std::string> words;
    for (int k = 0; k < word_count; ++k) {
      words.push_back("word" + std::to_string(random() % 5000));
    }
    tool::ShardRecord record =
        record_of("folder/" + std::to_string(100000 + i) + ".txt", std::move(words));
    for (double& weight : record.weights) {
      weight = std::generate_canonical<double, 53>(random);
    }
    records.push_back(i % 50 == 9 ? failed(record.path) : std::move(record));
  }
  return records;
}

/// Shards in a directory of their own.
class ShardDirectory : public testing::Test {
 protected:
  std::string path(std::string const& name) const { return (directory.path() / name).string(); }
  tool::WrittenShard write(std::string const& name, std::vector<tool::ShardRecord> const& records,
                           std::string const& by = origin) const {
    tool::ShardWriter writer(path(name), by);
    for (tool::ShardRecord const& record : records) {
      writer.add(record);
    }
    return writer.finish();
  }
  std::string bytes(std::string const& name) const { return directory.read(name.c_str()); }
  void put(std::string const& name, std::string const& content) const {
    directory.write(name.c_str(), content);
  }

  TemporaryDirectory directory;
};

}  // namespace test
