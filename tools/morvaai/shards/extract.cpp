#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "exit_status.h"
#include "shards/document_records.h"
#include "shards/extract_journal.h"
#include "shards/shard_error.h"
#include "shards/shard_inputs.h"
#include "shards/shard_names.h"
#include "shards/shard_reader.h"
#include "shards/shard_summary.h"
#include "shards/shard_writer.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

constexpr std::uint64_t no_place = std::numeric_limits<std::uint64_t>::max();

bool is_whole_shard(std::string const& path) {
  try {
    ShardReader const reader(path);
    return true;
  } catch (ShardError const&) {
    return false;
  }
}

// What a killed run leaves behind is replaced; it has its journal beside it.
void check_way_to(std::string const& shard) {
  std::string const on_its_way = new_shard_of(shard);
  if (!std::filesystem::exists(journal_of(shard)) && is_whole_shard(on_its_way)) {
    throw ShardError(on_its_way, "is in the way, and a whole shard; rename or remove it");
  }
}

// The documents of one shard, and how far they are.
class ExtractRun {
 public:
  ExtractRun(std::vector<ShardInput> inputs, std::string const& shard, std::string const& origin)
      : inputs_(std::move(inputs)),
        places_(inputs_.size(), no_place),
        shard_(shard),
        origin_(origin),
        journal_(journal_of(shard), origin) {}

  // Takes what an interrupted run has left.
  std::size_t resume() {
    journal_.read([this](ShardRecord const& record, FileStamp const& stamp, std::uint64_t place) {
      auto const found = std::lower_bound(inputs_.begin(), inputs_.end(), record.path,
                                          [](ShardInput const& input, std::string const& path) {
                                            return path_before(input.path, path);
                                          });
      if (found != inputs_.end() && found->path == record.path) {
        places_[static_cast<std::size_t>(found - inputs_.begin())] =
            is_settled(record) && found->stamp == stamp ? place : no_place;
      }
    });
    return inputs_.size() -
           static_cast<std::size_t>(std::count(places_.begin(), places_.end(), no_place));
  }

  // Reads the documents that are not done yet.
  void read_rest(std::size_t jobs) {
    std::vector<HString> files;
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
      if (places_[i] == no_place) {
        files.push_back(morvabs::from_path(inputs_[i].path));
        positions.push_back(i);
      }
    }
    extract_records(files, jobs, [&](std::size_t index, ShardRecord const& record) {
      std::size_t const at = positions[index];
      places_[at] = journal_.add(record, inputs_[at].stamp);
    });
  }

  bool is_complete() const {
    return std::find(places_.begin(), places_.end(), no_place) == places_.end();
  }

  WrittenShard write() {
    Progress const progress("writing the shard");
    ShardWriter writer(shard_, origin_);
    for (std::uint64_t const place : places_) {
      writer.add(journal_.at(place));
    }
    WrittenShard const written = writer.finish();
    journal_.remove();
    return written;
  }

 private:
  std::vector<ShardInput> inputs_;
  // Of their records in the journal.
  std::vector<std::uint64_t> places_;
  std::string shard_;
  std::string origin_;
  ExtractJournal journal_;
};

// Nothing where it did not come to its end: what was read until then is kept.
std::optional<WrittenShard> finish(ExtractRun& run, std::size_t jobs) {
  try {
    run.read_rest(jobs);
    if (run.is_complete()) {
      return run.write();
    }
  } catch (ShardError const& error) {
    complain(std::string(error.what()) +
             "; what was read is kept, and the same command goes on from there");
  }
  return std::nullopt;
}

bool print_summary(ExtractOptions const& options, Part const& part, WrittenShard const& written,
                   std::size_t resumed) {
  if (!options.json) {
    std::string const before =
        resumed == 0 ? std::string() : fmt::format(", {} of an earlier run", resumed);
    return show(shard_line(options.output, written) + before + "\n");
  }
  nlohmann::ordered_json object = shard_object(options.output, written);
  object["part"] = {{"index", part.index}, {"count", part.count}};
  object["resumed_count"] = resumed;
  return write_output(object.dump() + "\n");
}

}  // namespace

int run_extract(ExtractOptions const& options) {
  auto const part = part_of(options.part);
  if (!part) {
    complain("--part takes I/N, as 2/8: the second of eight parts");
    return wrong_use;
  }
  std::string const origin = origin_of_program();
  if (origin.empty()) {
    complain(no_dictionary_reason());
    return some_failed;
  }
  check_output(options.output);
  check_way_to(options.output);
  std::size_t refused = 0;
  ExtractRun run(shard_inputs(options.inputs, *part, options.output, refused), options.output,
                 origin);
  std::size_t const resumed = run.resume();
  auto const written = finish(run, options.jobs);
  if (!written) {
    return some_failed;
  }
  bool const is_printed = print_summary(options, *part, *written, resumed);
  bool const is_whole = written->totals.failed + written->totals.partial + refused == 0;
  return is_printed && is_whole ? all_done : some_failed;
}

}  // namespace tool
