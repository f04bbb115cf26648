#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "shards/byte_coding.h"
#include "shards/shard_record.h"

namespace tool {

/// Makes a block of bytes out of records. Of a path only what is other than in the one before is
/// written, a word where it comes first, and of a weight how it differs from the one before: the
/// bytes depend on the records of the block alone.
class RecordEncoder {
 public:
  /// Appends a record, which is storable.
  void add(ShardRecord const& record);
  std::string const& bytes() const { return bytes_; }
  /// Number of records.
  std::uint32_t count() const { return count_; }
  /// Begins the next block.
  void clear();

 private:
  void add_words(std::vector<std::string> const& words);

  std::string bytes_;
  std::uint32_t count_ = 0;
  std::string path_;
  std::unordered_map<std::string, std::uint64_t> places_;
};

/// Takes the records off a block again, which may be of any bytes.
class RecordDecoder {
 public:
  /// The bytes stay where they are until all is taken.
  explicit RecordDecoder(std::string_view bytes) : size_(bytes.size()), reader_(bytes) {}

  bool is_at_end() const { return reader_.is_at_end(); }
  /// The next record, a storable one. False where the bytes are no record, or where it would begin
  /// at `block_size` or later. Not to be called again then.
  bool take(ShardRecord& record);

 private:
  bool take_words(ShardRecord& record);
  bool take_weights(ShardRecord& record);

  std::size_t size_;
  ByteReader reader_;
  std::string path_;
  std::vector<std::string_view> words_;
};

}  // namespace tool
