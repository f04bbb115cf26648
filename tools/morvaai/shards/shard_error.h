#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

/// Why a shard cannot be read or written: one line that begins with the name of the file, fit for a
/// terminal.
class ShardError : public std::runtime_error {
 public:
  /// The path is bytes, as all paths of shards.
  ShardError(std::string_view path, std::string const& problem);
  /// With what the system says of an error number.
  ShardError(std::string_view path, int error);
};

}  // namespace tool
