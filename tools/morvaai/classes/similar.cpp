#include <algorithm>
#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "classes/fingerprints.h"
#include "classes/shard_corpus.h"
#include "command_line/commands.h"
#include "documents/failure.h"
#include "documents/inputs.h"
#include "exit_status.h"
#include "shards/shard_reader.h"
#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

using Json = nlohmann::ordered_json;
using Groups = std::vector<HFileDNAGroup>;

constexpr std::size_t output_at_once = std::size_t{1} << 16U;

std::string counted(std::size_t count, char const* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string percent(double similarity) {
  return fmt::format("{:.1f} %", similarity);
}

std::string at_least(double similarity) {
  return similarity < 100.0 ? percent(similarity) + " or more" : percent(similarity);
}

std::size_t count_alone(Fingerprints const& all, Groups const& groups) {
  std::size_t alone = all.files.size();
  for (HFileDNAGroup const& group : groups) {
    alone -= group.members.size();
  }
  return alone;
}

double similarity_to_first(Fingerprints const& all, HFileDNAGroup const& group, std::size_t file) {
  return HFileMatchDNA::get_dna_similarity(all.dnas[group.members.front()], all.dnas[file]);
}

std::string groups_as_text(Fingerprints const& all, Groups const& groups, double threshold) {
  std::string text = fmt::format(
      "{} compared at {} %: {}, {} like no other\n", counted(all.files.size(), "file"), threshold,
      counted(groups.size(), "group"), counted(count_alone(all, groups), "file"));
  for (std::size_t i = 0; i < groups.size(); ++i) {
    text += fmt::format(
        "\n{}\n", styled(Role::heading, fmt::format("group {}: {}, held together by {}", i + 1,
                                                    counted(groups[i].members.size(), "file"),
                                                    at_least(groups[i].weakest_link))));
    Table table({Align::right, Align::left}, 2);
    for (std::size_t const file : groups[i].members) {
      table.add({percent(similarity_to_first(all, groups[i], file)), printable(all.files[file])});
    }
    table.fit(1, output_screen().columns);
    text += table.text();
  }
  return text;
}

std::string groups_as_json(Fingerprints const& all, Groups const& groups, double threshold) {
  Json object = {{"threshold", threshold}, {"file_count", all.files.size()}};
  object["groups"] = Json::array();
  for (HFileDNAGroup const& group : groups) {
    Json files = Json::array();
    for (std::size_t const file : group.members) {
      files.push_back(
          {{"file", utf8(all.files[file])}, {"similarity", similarity_to_first(all, group, file)}});
    }
    object["groups"].push_back({{"file_count", group.members.size()},
                                {"weakest_link", group.weakest_link},
                                {"files", std::move(files)}});
  }
  object["alone_count"] = count_alone(all, groups);
  object["failed"] = json_of(all.failed);
  // A reason may quote the bytes of a document.
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool print_groups(Fingerprints const& all, SimilarOptions const& options) {
  Progress progress("comparing");
  Groups const groups = HFileSimilarDNA::get_groups(all.dnas, options.threshold);
  progress.clear();
  return options.json ? write_output(groups_as_json(all, groups, options.threshold))
                      : show(groups_as_text(all, groups, options.threshold));
}

// The lines of pairs, of which there may be more than memory has room for.
class PairLines {
 public:
  PairLines(Fingerprints const& all, bool json) : json_(json) {
    std::size_t const room = room_for_each();
    for (HString const& file : all.files) {
      names_.push_back(json ? utf8(file) : cut_middle(printable(file), room));
      width_ = std::max(width_, std::min(widest, columns_of(names_.back())));
    }
  }

  std::string line(HFileDNAPair const& pair) const {
    std::string const& first = names_[pair.first];
    std::string const& second = names_[pair.second];
    if (json_) {
      Json object;
      object["files"] = {first, second};
      object["similarity"] = pair.similarity;
      return object.dump() + "\n";
    }
    std::string const space(width_ - std::min(width_, columns_of(first)), ' ');
    return fmt::format("{:>{}}  {}{}  {}\n", percent(pair.similarity), percent_width, first, space,
                       second);
  }

 private:
  // Where one name is longer, the others need not stand as far from theirs.
  static constexpr std::size_t widest = 60;
  static constexpr std::size_t percent_width = 7;

  // Of a name, on a terminal; elsewhere it is whole.
  static std::size_t room_for_each() {
    constexpr std::size_t narrowest = 16;
    constexpr std::size_t gaps = 4;
    if (!output_screen().columns) {
      return std::numeric_limits<std::size_t>::max();
    }
    std::size_t const room = *output_screen().columns;
    return room < percent_width + gaps + 2 * narrowest ? narrowest
                                                       : (room - percent_width - gaps) / 2;
  }

  bool json_;
  std::vector<std::string> names_;
  std::size_t width_ = 0;
};

bool print_pairs(Fingerprints const& all, SimilarOptions const& options) {
  Progress const progress("comparing");
  PairLines const lines(all, options.json);
  std::string text;
  for (std::size_t i = 0; options.json && i < all.failed.size(); ++i) {
    Failure const why = failure_of(all.failed[i].reason);
    text += json_failure(all.failed[i].file, why.outcome, why.reason);
  }
  bool is_written = true;
  HFileSimilarDNA::get_pairs(all.dnas, options.threshold, [&](HFileDNAPair const& pair) {
    text += lines.line(pair);
    if (text.size() >= output_at_once) {
      is_written = write_output(text);
      text.clear();
    }
    return is_written;
  });
  return is_written && write_output(text);
}

// Takes those out of the paths that are shards.
std::vector<std::string> take_shards(std::vector<std::string>& paths) {
  auto const first = std::stable_partition(paths.begin(), paths.end(),
                                           [](std::string const& path) { return !is_shard(path); });
  std::vector<std::string> shards(first, paths.end());
  paths.erase(first, paths.end());
  return shards;
}

// The fingerprints of lists, of shards, and of files. Behind --from, a file that is a shard is read
// as one.
Fingerprints read_all(SimilarOptions const& options) {
  std::vector<std::string> lists = options.lists;
  std::vector<std::string> inputs = options.inputs;
  std::vector<std::string> shards = take_shards(lists);
  if (!options.lists.empty()) {
    std::vector<std::string> const others = take_shards(inputs);
    shards.insert(shards.end(), others.begin(), others.end());
  }
  Fingerprints all;
  for (std::string const& list : lists) {
    load_fingerprints(list, all);
  }
  load_fingerprints_of_shards(shards, all);
  if (!inputs.empty()) {
    read_fingerprints(expand_inputs(inputs), options.jobs, all);
  }
  keep_first_of_each(all);
  return all;
}

}  // namespace

int run_similar(SimilarOptions const& options) {
  if (options.inputs.empty() && options.lists.empty()) {
    complain("name files or folders, or shards or a list of fingerprints with --from");
    return wrong_use;
  }
  if (std::count(options.lists.begin(), options.lists.end(), "-") +
          std::count(options.inputs.begin(), options.inputs.end(), "-") >
      1) {
    complain("standard input can be the list of paths or that of fingerprints, not both");
    return wrong_use;
  }
  Fingerprints const all = read_all(options);
  bool const is_printed = options.pairs ? print_pairs(all, options) : print_groups(all, options);
  return is_printed ? all.status : some_failed;
}

}  // namespace tool
