#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shards/file_stamp.h"

namespace tool {

/// One of so many parts of all documents, the first is 1.
struct Part {
  std::uint64_t index = 1;
  std::uint64_t count = 1;
};

/// Parts there may be, at most.
constexpr std::uint64_t most_parts = 1000000;

/// "2/8"; nothing for another text, and where the index is not among the parts.
std::optional<Part> part_of(std::string const& text);

/// Whether the document of that path is of the part. A hash of the path says so: it is in its part
/// whatever other documents come or go, and parts are of nearly the same size where they are large.
bool is_in_part(std::string const& path, Part const& part);

/// A document that is to be read, and what its file was like beforehand.
struct ShardInput {
  std::string path;
  FileStamp stamp;
};

/// The documents that the arguments of a command name, those of the part, each once, in the order
/// of shards. What is written for this shard is none of them. A path that no file can have, or
/// one over `longest_path`, is told, and counted in `refused`.
std::vector<ShardInput> shard_inputs(std::vector<std::string> const& arguments, Part const& part,
                                     std::string const& shard, std::size_t& refused);

}  // namespace tool
