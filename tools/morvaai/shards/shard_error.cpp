#include "shards/shard_error.h"

#include <system_error>

#include "morvaai.h"

#include "terminal/output.h"

namespace tool {

ShardError::ShardError(std::string_view path, std::string const& problem)
    : std::runtime_error(printable(morvabs::from_path(path)) + ": " + problem) {}

ShardError::ShardError(std::string_view path, int error)
    : ShardError(path, std::system_category().message(error)) {}

}  // namespace tool
