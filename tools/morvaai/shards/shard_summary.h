#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "shards/shard_writer.h"

namespace tool {

/// What `extract` and `merge` tell of the shard that they wrote: a line for a person, which begins
/// with its path, and the members of an object.
std::string shard_line(std::string const& path, WrittenShard const& shard);
nlohmann::ordered_json shard_object(std::string const& path, WrittenShard const& shard);

}  // namespace tool
