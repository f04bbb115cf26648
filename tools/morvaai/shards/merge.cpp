#include <filesystem>
#include <string>
#include <system_error>

#include <nlohmann/json.hpp>

#include "morvaai.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "shards/shard_error.h"
#include "shards/shard_merge.h"
#include "shards/shard_names.h"
#include "shards/shard_summary.h"
#include "shards/shard_writer.h"
#include "terminal/output.h"

namespace tool {

namespace {

// The shard is written beside its place first, over what is there.
void check_inputs(MergeOptions const& options) {
  for (std::string const& shard : options.shards) {
    std::error_code none;
    if (std::filesystem::equivalent(shard, new_shard_of(options.output), none)) {
      throw ShardError(shard, "would be overwritten on the way to " +
                                  printable(morvabs::from_path(options.output)) + "; rename it");
    }
  }
}

}  // namespace

int run_merge(MergeOptions const& options) {
  check_output(options.output);
  check_inputs(options);
  MergedShards shards(options.shards);
  ShardWriter writer(options.output, shards.origin());
  shards.take_all([&](ShardRecord const& record) { writer.add(record); });
  WrittenShard const written = writer.finish();
  if (!options.json) {
    return show(shard_line(options.output, written) + "\n") ? all_done : some_failed;
  }
  nlohmann::ordered_json object = shard_object(options.output, written);
  object["shard_count"] = options.shards.size();
  return write_output(object.dump() + "\n") ? all_done : some_failed;
}

}  // namespace tool
