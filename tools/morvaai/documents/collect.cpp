#include <cerrno>
#include <cstring>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "documents/run_on_files.h"
#include "documents/work_directory.h"
#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

/// What can be said of a document beside its records: how reading it went, and what was wrong.
struct Reading {
  std::string outcome;
  std::string reason;
  std::string problem;
  HString text;
};

/// The records that the agent has of one file.
struct Records {
  HFileCollectFeatureNode words;
  HFileCollectDNANode fingerprint;
};

Reading read(HString const& path) {
  Document const document(path);
  if (auto const failure = document.failure(path, false)) {
    return {document.outcome_name(), document.reason(), failure->problem, HString()};
  }
  return {document.outcome_name(), document.reason(), document.incompleteness(),
          document.main_text()};
}

Records collect(HString const& path) {
  HFileCollectMgr const* const manager = HFileCollectMgr::pins();
  Records records;
  manager->get_file_feature(path, records.words);
  manager->get_file_dna(path, records.fingerprint);
  return records;
}

std::string as_json(Records const& records, Reading const& reading) {
  HFileCollectFeatureNode const& words = records.words;
  nlohmann::ordered_json object;
  object["file"] = utf8(words.str_file);
  object["outcome"] = reading.outcome;
  if (!reading.reason.empty()) {
    object["reason"] = reading.reason;
  }
  object["agent_id"] = utf8(words.str_agent_id);
  object["collected"] = words.t_collect;
  object["kb_size"] = std::stoll(utf8(words.str_kb_size));
  object["md5"] = utf8(records.fingerprint.str_md5);
  object["dna"] = utf8(records.fingerprint.str_dna);
  object["words"] = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < words.vt_words.size(); ++i) {
    object["words"].push_back({{"word", utf8(words.vt_words[i])},
                               {"count", words.vt_counts[i]},
                               {"weight", words.vt_weight[i]}});
  }
  return object.dump() + "\n";
}

std::string as_table(Records const& records) {
  HFileCollectFeatureNode const& words = records.words;
  Table about({{Align::left, 9}, Align::left}, 2);
  auto const add = [&about](char const* name, std::string const& value) {
    about.add({{name, Role::faint}, value.empty() ? "-" : value});
  };
  add("agent", printable(words.str_agent_id));
  add("collected", fmt::format("{:%Y-%m-%d %H:%M:%S} UTC", fmt::gmtime(words.t_collect)));
  add("size", printable(words.str_kb_size) + " KB");
  add("md5", printable(records.fingerprint.str_md5));
  add("dna", printable(records.fingerprint.str_dna));
  add("words", std::to_string(words.vt_words.size()));
  Table table({Align::decimal, {Align::right, 5}, Align::left}, 4);
  if (output_screen().is_terminal) {
    table.set_titles({"weight", "count", "word"});
  }
  for (std::size_t i = 0; i < words.vt_words.size(); ++i) {
    table.add({fmt::format("{:.6f}", words.vt_weight[i]), std::to_string(words.vt_counts[i]),
               printable(words.vt_words[i])});
  }
  return styled(Role::heading, printable(words.str_file)) + "\n" + about.text() + table.text();
}

/// The library writes the text of a document into a working file, and does not tell where it
/// cannot. Done again, it shows why; empty where there is nothing in the way.
std::string hindrance(HString const& text) {
  HString const file = HEnvironment::GetMyExeFullFilePath(true) + L"text";
  bool const is_written = HFile::write_to_file(file, text, false, false);
  std::string const reason = std::strerror(errno);
  HFile::delete_file(file);
  return is_written ? std::string() : "failed: " + printable(file) + ": " + reason;
}

std::string missing_words(HString const& path, HString const& text) {
  if (!HStutterDict::pins()->is_exist_dict()) {
    return no_dictionary(path, false).problem;
  }
  std::string const problem = hindrance(text);
  return problem.empty() ? no_words(path, false).problem : problem;
}

/// A document that was refused has records too, without words and fingerprint; a missing file has
/// none.
FileReport report_collected(HString const& path, bool json) {
  if (!HFile::IsFileExistFile(path)) {
    if (auto const failure = Document(path).failure(path, json)) {
      return *failure;
    }
  }
  Reading reading = read(path);
  Records const records = collect(path);
  bool const has_all = !records.words.vt_words.empty() && records.fingerprint.str_dna.not_empty();
  if (!has_all && reading.problem.empty()) {
    reading.problem = missing_words(path, reading.text);
  }
  return {json ? as_json(records, reading) : as_table(records), reading.problem};
}

}  // namespace

int run_collect(RunOptions const& options) {
  WorkDirectory const directory;
  // Asked for its identifier once, not in each worker.
  HFileCollectMgr::pins();
  WorkerNeeds needs;
  needs.directory = &directory;
  return print_on_files(
      options, [&](HString const& path) { return report_collected(path, options.json); }, needs);
}

}  // namespace tool
