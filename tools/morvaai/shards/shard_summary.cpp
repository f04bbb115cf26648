#include "shards/shard_summary.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "morvaai.h"

#include "terminal/output.h"

namespace tool {

std::string shard_line(std::string const& path, WrittenShard const& shard) {
  ShardTotals const& totals = shard.totals;
  std::string line = fmt::format("{}: {} document{}", printable(morvabs::from_path(path)),
                                 totals.documents, totals.documents == 1 ? "" : "s");
  if (totals.failed > 0) {
    line += fmt::format(", {} without words", totals.failed);
  }
  if (totals.partial > 0) {
    line += fmt::format(", {} read only in part", totals.partial);
  }
  return line + fmt::format(", {} bytes", shard.bytes);
}

nlohmann::ordered_json shard_object(std::string const& path, WrittenShard const& shard) {
  nlohmann::ordered_json object;
  object["file"] = utf8(morvabs::from_path(path));
  object["bytes"] = shard.bytes;
  object["checksum"] = fmt::format("{:016X}", shard.checksum);
  object["document_count"] = shard.totals.documents;
  object["failed_count"] = shard.totals.failed;
  object["partial_count"] = shard.totals.partial;
  return object;
}

}  // namespace tool
