#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "shards/shard_merge.h"
#include "shards/shard_summary.h"
#include "shards/shard_writer.h"

namespace tool {

int run_merge(MergeOptions const& options) {
  check_output(options.output);
  MergedShards shards(options.shards);
  ShardWriter writer(options.output, shards.extraction());
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
