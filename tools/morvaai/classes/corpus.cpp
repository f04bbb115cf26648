#include "classes/corpus.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "documents/document.h"
#include "documents/failure.h"
#include "documents/run_on_files.h"
#include "documents/word_record.h"
#include "terminal/output.h"

namespace tool {

namespace {

constexpr int wide_length = 1024;

WordRecord record_of(HFeatureNode const& node) {
  return {node.vt_words, node.vt_counts, node.vt_weight, node.str_dna};
}

std::optional<HFeatureNode> node_of(std::string const& packed, HString const& path, bool with_dna) {
  std::optional<WordRecord> record = unpack_record(packed);
  if (!record || record->words.empty() || record->dna.length() != (with_dna ? wide_length : 0)) {
    return std::nullopt;
  }
  HFeatureNode node;
  node.str_file_name = path.get_short_name_no_suffix();
  for (std::size_t i = 0; i < record->words.size(); ++i) {
    node.map_word_weight[record->words[i]] = record->weights[i];
  }
  node.vt_words = std::move(record->words);
  node.vt_counts = std::move(record->counts);
  node.vt_weight = std::move(record->weights);
  node.str_dna = std::move(record->dna);
  return node;
}

FileReport extract(HString const& path, bool with_dna) {
  Document const document(path);
  HFeatureNode record;
  if (auto report = document.take_words(path, record)) {
    return *report;
  }
  if (with_dna) {
    HFileDNA::get_file_dna(document.parser(), record.str_dna, nullptr, wide_length);
    if (record.str_dna.length() != wide_length) {
      return {std::string(), "its fingerprint is no point of 128 dimensions"};
    }
  }
  return {pack(record_of(record)), document.incompleteness()};
}

}  // namespace

nlohmann::ordered_json json_of(std::vector<Corpus::Failure> const& failed) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (Corpus::Failure const& one : failed) {
    auto const [outcome, reason] = failure_of(one.reason);
    list.push_back(
        {{"file", utf8(one.file)}, {"error", {{"outcome", outcome}, {"reason", reason}}}});
  }
  return list;
}

int read_records(std::vector<HString> const& files, std::size_t jobs, bool with_dna,
                 std::function<bool(std::size_t, Extracted)> const& take) {
  return run_on_files(
      files, jobs, [with_dna](HString const& path) { return extract(path, with_dna); },
      [&](std::size_t index, FileReport const& report) {
        if (report.output.empty()) {
          return take(index, {std::nullopt, report.problem});
        }
        if (auto node = node_of(report.output, files[index], with_dna)) {
          return take(index, {std::move(node), {}});
        }
        complain(printable(files[index]) + ": " + senseless_answer);
        take(index, {std::nullopt, senseless_answer});
        return false;
      });
}

Corpus read_corpus(std::vector<HString> const& files, std::size_t jobs, CorpusNeeds const& needs) {
  Corpus corpus;
  auto const take = [&](std::size_t index, Extracted extracted) {
    if (!extracted.record) {
      corpus.failed.push_back({files[index], std::move(extracted.reason)});
      return true;
    }
    HFeatureNode& record = *extracted.record;
    corpus.files.push_back(files[index]);
    corpus.data.add(record);
    if (needs.fingerprints) {
      corpus.fingerprints.push_back(HFileDNA::get_pointn(record.str_file_id, record.str_dna));
    }
    if (needs.records) {
      corpus.records.push_back(std::move(record));
    }
    return true;
  };
  corpus.status = read_records(files, jobs, needs.fingerprints, take);
  return corpus;
}

}  // namespace tool
