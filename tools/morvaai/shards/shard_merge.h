#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shards/shard_reader.h"

namespace tool {

/// Shards read together, as if they were one: in the order of paths, whatever the order of the
/// shards. Takes the memory of a block of each. All that fails is a ShardError.
class MergedShards {
 public:
  /// Refuses shards that were not of the same origin.
  explicit MergedShards(std::vector<std::string> const& paths);
  ~MergedShards();
  MergedShards(MergedShards const&) = delete;
  MergedShards& operator=(MergedShards const&) = delete;

  /// That of all.
  std::string const& origin() const;
  /// The folder that holds all documents, with the slash at its end; empty where there is none, or
  /// no document.
  std::string common_folder() const;

  /// The next record; false behind the last one. A path that several shards have comes once where
  /// their records are equal; where they are not, that is an error.
  bool next(ShardRecord& record);
  /// Hands out all that are left, with progress on a terminal.
  void take_all(std::function<void(ShardRecord const&)> const& take);

 private:
  struct Source;
  static bool is_later(std::unique_ptr<Source> const& a, std::unique_ptr<Source> const& b);
  std::unique_ptr<Source> take_first();
  void advance(std::unique_ptr<Source> source);

  std::string origin_;
  // Those that more than one shard has count as often.
  std::uint64_t record_count_ = 0;
  std::string first_path_;
  std::string last_path_;
  // A heap, that with the first record foremost.
  std::vector<std::unique_ptr<Source>> sources_;
};

}  // namespace tool
