#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "shards/file_stamp.h"
#include "shards/shard_files.h"
#include "shards/shard_record.h"

namespace tool {

/// The documents that an extraction has finished, in a file beside the shard that it is to become:
/// what is in there need not be read again when a run was interrupted. Each document is written as
/// it comes; a tail that was not written whole is cut off. The file is locked while the object
/// lives. All that fails is a ShardError.
class ExtractJournal {
 public:
  /// Opens the file, or makes it. One of another origin (`ShardHeader`), or whose header cannot be
  /// read, begins anew, with a warning; what is no such file is refused.
  ExtractJournal(std::string path, std::string const& origin);

  /// Hands out what is there: each record with the stamp that its file had, and its place.
  void read(std::function<void(ShardRecord const&, FileStamp const&, std::uint64_t)> const& take);
  /// Adds a storable record, and gives its place.
  std::uint64_t add(ShardRecord const& record, FileStamp const& stamp);
  /// The record at a place that was given out.
  ShardRecord at(std::uint64_t place) const;
  /// Deletes the file. Nothing else is to be called then.
  void remove() { file_.remove(); }

 private:
  struct Entry;
  bool read_entry(std::uint64_t place, Entry& entry) const;
  void begin(std::string const& origin);

  LockedFile file_;
  std::uint64_t first_ = 0;
  std::uint64_t end_ = 0;
};

}  // namespace tool
