#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "morvaai.h"

#include "shards/shard_record.h"

namespace tool {

/// By what this program makes records (`ShardHeader::origin`): its version, and the MD5 of each
/// file of the dictionary. Empty without a dictionary: then there is nothing to extract with.
std::string origin_of_program();

/// The record of a document that gave nothing, from what its worker said of it, which may be
/// anything.
ShardRecord failed_record(std::string path, std::string const& problem);

/// Makes the records of the files in worker processes, as `run_on_files` does, and hands them to
/// `take`: one for each, those of files that failed too. They come in order of the files, but for
/// those whose worker was killed from outside, as when memory ran short: these are read once more
/// when all others are done, one at a time, and come last.
void extract_records(std::vector<HString> const& files, std::size_t jobs,
                     std::function<void(std::size_t, ShardRecord)> const& take);

}  // namespace tool
