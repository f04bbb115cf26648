#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "shards/checksum.h"
#include "shards/record_coding.h"
#include "shards/shard_files.h"
#include "shards/shard_layout.h"

namespace tool {

/// What was written.
struct WrittenShard {
  ShardTotals totals;
  std::uint64_t bytes = 0;
  /// Of all of it: the same for equal shards.
  std::uint64_t checksum = 0;
};

/// Throws a ShardError unless a shard can come to stand there: where something stands, a regular
/// file, which is a shard or empty.
void check_output(std::string const& path);

/// Writes a shard. The same records give the same bytes. Until it is whole it stands beside its
/// place (`new_shard_of`), and a run that ends before leaves there at most what the
/// next one overwrites: at its own place is what was there, or all that is new. Takes the memory of
/// one block, and 16 bytes for each that is written. All that fails is a ShardError.
class ShardWriter {
 public:
  /// `path` is bytes; `origin` is that of the records (`ShardHeader`).
  ShardWriter(std::string path, std::string const& origin);
  ~ShardWriter();
  ShardWriter(ShardWriter const&) = delete;
  ShardWriter& operator=(ShardWriter const&) = delete;

  /// Records that are storable, each behind the one before it by `path_before`.
  void add(ShardRecord const& record);
  /// Puts the shard in its place.
  WrittenShard finish();

 private:
  void append(std::string_view bytes);
  void end_block();

  std::string path_;
  LockedFile file_;
  std::uint64_t offset_ = 0;
  Checksum checksum_;
  RecordEncoder block_;
  std::string last_path_;
  std::string index_;
  ShardTrailer trailer_;
  bool is_done_ = false;
};

}  // namespace tool
