#pragma once

#include <string>

namespace tool {

/// What stands beside a shard until that is whole: the new shard as it is written, and the journal
/// of the documents that are done (`ExtractJournal`). Paths are bytes.
inline std::string new_shard_of(std::string const& shard) {
  return shard + ".new";
}
inline std::string journal_of(std::string const& shard) {
  return shard + ".part";
}

}  // namespace tool
