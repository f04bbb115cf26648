#include "shards/document_records.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "morvaai.h"

#include "documents/document.h"
#include "documents/failure.h"
#include "documents/run_on_files.h"
#include "documents/word_record.h"
#include "terminal/output.h"
#include "version_number.h"

namespace tool {

namespace {

// The outcome as a byte, then the words.
FileReport extract(HString const& path) {
  Document const document(path);
  HFeatureNode words;
  if (auto report = document.take_words(path, words)) {
    return *report;
  }
  if (auto report = take_dna(document, path, narrow_dna, false, words.str_dna)) {
    return *report;
  }
  WordRecord const record = {words.vt_words, words.vt_counts, words.vt_weight, words.str_dna};
  return {static_cast<char>(outcome_code(document.outcome_name())) + pack(record),
          document.incompleteness()};
}

// Of a worker that was killed, which the pool itself never does without another reason.
bool was_killed(FileReport const& report) {
  constexpr std::array<int, 2> signals = {SIGKILL, SIGTERM};
  return report.output.empty() && std::any_of(signals.begin(), signals.end(), [&](int signal) {
           return report.problem == std::string(morvabs::ended_by_signal) + strsignal(signal);
         });
}

// The reason why a document was not read to its end.
std::string reason_in(std::string const& problem) {
  return problem.starts_with(read_in_part) ? problem.substr(std::string_view(read_in_part).size())
                                           : problem;
}

void note_failure(std::string const& problem, ShardRecord& record) {
  auto [outcome, reason] = failure_of(problem);
  record.outcome = std::move(outcome);
  record.reason = std::move(reason);
}

// The record that a worker has packed; nothing where it makes no sense.
std::optional<ShardRecord> unpack(std::string path, FileReport const& report) {
  auto const outcome = outcome_word(static_cast<std::uint8_t>(report.output.front()));
  std::optional<WordRecord> const packed = unpack_record(std::string_view(report.output).substr(1));
  if (!outcome || !packed || packed->words.empty()) {
    return std::nullopt;
  }
  ShardRecord record;
  record.path = std::move(path);
  record.outcome = *outcome;
  record.reason = reason_in(report.problem);
  for (HString const& word : packed->words) {
    record.words.push_back(utf8(word));
  }
  record.counts = packed->counts;
  record.weights = packed->weights;
  record.dna = utf8(packed->dna);
  return is_storable(record) ? std::optional(std::move(record)) : std::nullopt;
}

// Tells where what the worker has packed makes no sense.
ShardRecord record_of(HString const& file, FileReport const& report) {
  std::string const path = morvabs::to_path(file).value_or(std::string());
  if (report.output.empty()) {
    return failed_record(path, report.problem);
  }
  if (auto record = unpack(path, report)) {
    return *std::move(record);
  }
  complain(printable(file) + ": " + senseless_answer);
  return failed_record(path, senseless_answer);
}

}  // namespace

std::string origin_of_program() {
  HString directory = Orlec::LocateMgr::pins()->get_dict_path(false);
  HStutterDict::pins()->set_dict_path(directory);
  if (!HStutterDict::pins()->is_exist_dict()) {
    return {};
  }
  std::string origin = "morvaai " + version_number();
  directory.dir_fit(true);
  for (wchar_t const* const name : {L"morvajieba.dict", L"user.dict", L"stop_words"}) {
    HString md5;
    if (HFileMD5::get_file_md5(directory + name, md5)) {
      origin += ", " + utf8(name) + " " + utf8(md5);
    }
  }
  return origin;
}

ShardRecord failed_record(std::string path, std::string const& problem) {
  ShardRecord record;
  record.path = std::move(path);
  note_failure(problem, record);
  if (!is_storable(record)) {
    note_failure(senseless_answer, record);
  }
  return record;
}

void extract_records(std::vector<HString> const& files, std::size_t jobs,
                     std::function<void(std::size_t, ShardRecord)> const& take) {
  std::vector<std::size_t> killed;
  run_on_files(files, jobs, &extract, [&](std::size_t index, FileReport const& report) {
    if (was_killed(report)) {
      killed.push_back(index);
    } else {
      take(index, record_of(files[index], report));
    }
    return true;
  });
  if (killed.empty()) {
    return;
  }
  complain(fmt::format(
      "warning: workers were killed from outside, as when memory runs short; read again alone: {}",
      killed.size()));
  std::vector<HString> again;
  again.reserve(killed.size());
  for (std::size_t const index : killed) {
    again.push_back(files[index]);
  }
  run_on_files(again, 1, &extract, [&](std::size_t index, FileReport const& report) {
    take(killed[index], record_of(again[index], report));
    return true;
  });
}

}  // namespace tool
