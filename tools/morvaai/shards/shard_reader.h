#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shards/record_coding.h"
#include "shards/shard_files.h"
#include "shards/shard_layout.h"

namespace tool {

/// Whether the file begins as a shard does.
bool has_shard_mark(InputFile const& file);
/// The same of a path; false as well where it cannot be read.
bool is_shard(std::string const& path);

/// Reads a shard record by record. Its bytes may be of anyone: whatever they are, they cost no more
/// memory than the largest block (`largest_block`) and the largest record take, some 40 MB, and
/// what is damaged, cut off or no shard is a ShardError. Records that were handed out before stay
/// good. Records can be larger than what stands for them, as their paths and words repeat: who
/// keeps the paths of all may need `longest_path` for some bytes of the file.
class ShardReader {
 public:
  /// Checks beginning, end and index.
  explicit ShardReader(std::string path);

  std::string const& path() const { return file_.path(); }
  /// By what the records were made.
  std::string const& origin() const { return origin_; }
  ShardTotals const& totals() const { return trailer_.totals; }

  /// The next record; false behind the last one, once all of it has proved to be whole.
  bool next(ShardRecord& record);
  /// The path of the last record; nothing in a shard without any. What `next` gives stays the same.
  std::optional<std::string> last_path() const;

 private:
  [[noreturn]] void refuse(char const* why) const;
  void read_header();
  void read_trailer();
  void check_index() const;
  BlockHead head_of(std::uint64_t block) const;
  std::string block_at(std::uint64_t offset, BlockHead const& head) const;
  bool next_block();

  InputFile file_;
  std::string origin_;
  std::string header_;
  ShardTrailer trailer_;
  // Behind the last block that was read.
  std::uint64_t offset_ = 0;
  std::uint64_t block_ = 0;
  std::string bytes_;
  std::optional<RecordDecoder> decoder_;
  std::uint32_t left_in_block_ = 0;
  std::string last_path_;
  ShardTotals seen_;
};

}  // namespace tool
