#include "corpus.h"

#include <cstdint>
#include <utility>

#include <nlohmann/json.hpp>

#include "document.h"

namespace tool {

namespace {

constexpr int wide_length = 1024;

// The binary form keeps every bit of a weight.
std::string pack(HFeatureNode const& record) {
  nlohmann::json words = nlohmann::json::array();
  for (std::size_t i = 0; i < record.vt_words.size(); ++i) {
    words.push_back({utf8(record.vt_words[i]), record.vt_counts[i], record.vt_weight[i]});
  }
  auto const bytes = nlohmann::json::to_cbor({std::move(words), utf8(record.str_dna)});
  return {bytes.begin(), bytes.end()};
}

HFeatureNode unpack(std::string const& packed, HString const& path) {
  nlohmann::json const content = nlohmann::json::from_cbor(packed);
  HFeatureNode record;
  record.str_file_name = path.get_short_name_no_suffix();
  for (nlohmann::json const& entry : content[0]) {
    HString const word(entry[0].get_ref<std::string const&>().c_str());
    record.vt_words.push_back(word);
    record.vt_counts.push_back(entry[1].get<int>());
    record.vt_weight.push_back(entry[2].get<double>());
    record.map_word_weight[word] = record.vt_weight.back();
  }
  record.str_dna = HString(content[1].get_ref<std::string const&>().c_str());
  return record;
}

FileReport extract(HString const& path, bool with_dna) {
  Document const document(path);
  if (auto report = document.failure(path, false)) {
    return *report;
  }
  HFeatureNode record;
  if (!HFileFeature::get_file_feature(document.parser(), record)) {
    return no_dictionary(path, false);
  }
  if (record.vt_words.empty()) {
    return no_words(path, false);
  }
  if (with_dna) {
    HFileDNA::get_file_dna(document.parser(), record.str_dna, nullptr, wide_length);
    if (record.str_dna.length() != wide_length) {
      return {std::string(), "its fingerprint is no point of 128 dimensions"};
    }
  }
  return {pack(record), document.incompleteness()};
}

}  // namespace

int read_records(std::vector<HString> const& files, std::size_t jobs, bool with_dna,
                 std::function<bool(std::size_t, Extracted)> const& take) {
  return run_on_files(
      files, jobs, [with_dna](HString const& path) { return extract(path, with_dna); },
      [&](std::size_t index, FileReport const& report) {
        if (report.output.empty()) {
          return take(index, {std::nullopt, report.problem});
        }
        return take(index, {unpack(report.output, files[index]), {}});
      });
}

Corpus read_corpus(std::vector<HString> const& files, std::size_t jobs, bool with_dna) {
  Corpus corpus;
  corpus.status = read_records(files, jobs, with_dna, [&](std::size_t index, Extracted extracted) {
    if (extracted.record) {
      corpus.files.push_back(files[index]);
      corpus.data.add(*extracted.record);
      if (with_dna) {
        corpus.fingerprints.push_back(
            HFileDNA::get_pointn(extracted.record->str_file_id, extracted.record->str_dna));
      }
    } else {
      corpus.failed.push_back({files[index], std::move(extracted.reason)});
    }
    return true;
  });
  return corpus;
}

}  // namespace tool
