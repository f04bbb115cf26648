#include <algorithm>
#include <map>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "documents/failure.h"
#include "documents/run_on_files.h"
#include "documents/word_record.h"
#include "exit_status.h"
#include "terminal/output.h"
#include "terminal/style.h"

namespace tool {

namespace {

// Below this many different words chance decides too many of the bits.
constexpr std::size_t fewest_words = 50;

// Unrelated texts agree in 50 of 100 bits, give or take 4.4 of 128.
char const* meaning(double similarity) {
  if (similarity == 100.0) {
    return "the same words with the same weights";
  }
  if (similarity >= 90.0) {
    return "nearly the same text";
  }
  if (similarity >= 75.0) {
    return "much text in common";
  }
  if (similarity >= 65.0) {
    return "a similar choice of words";
  }
  return "no more alike than any two texts";
}

// Words of both sides, those that weigh most in both first; ties in order of the words.
std::vector<HString> shared_words(WordRecord const& first, WordRecord const& second) {
  std::map<HString, double> weights;
  for (std::size_t i = 0; i < first.words.size(); ++i) {
    weights[first.words[i]] = first.weights[i];
  }
  std::map<HString, double> shared;
  for (std::size_t i = 0; i < second.words.size(); ++i) {
    if (auto const found = weights.find(second.words[i]); found != weights.end()) {
      shared[second.words[i]] = std::min(found->second, second.weights[i]);
    }
  }
  std::vector<HString> words;
  words.reserve(shared.size());
  for (auto const& entry : shared) {
    words.push_back(entry.first);
  }
  std::stable_sort(words.begin(), words.end(), [&shared](HString const& a, HString const& b) {
    return shared.at(a) > shared.at(b);
  });
  return words;
}

FileReport read_side(HString const& path) {
  Document const document(path);
  if (auto report = document.failure(path, false)) {
    return *report;
  }
  std::vector<WordNode> words;
  if (!HFileWordNode::get_file_word_node(document.main_text(), path, words, 0)) {
    return no_dictionary(path, false);
  }
  WordRecord record;
  if (auto report = take_dna(document, path, narrow_dna, false, record.dna)) {
    return *report;
  }
  for (WordNode const& node : words) {
    record.words.push_back(node.word);
    record.counts.push_back(node.count);
    record.weights.push_back(node.weight);
  }
  return {pack(record), document.incompleteness()};
}

/// Both sides, of which each that cannot be read is told and left out.
std::vector<WordRecord> read_sides(std::vector<HString> const& paths, bool json) {
  std::vector<WordRecord> sides;
  run_on_files(paths, paths.size(), &read_side, [&](std::size_t index, FileReport const& report) {
    auto record = report.output.empty() ? std::nullopt : unpack_record(report.output);
    if (record && record->dna.length() == narrow_dna) {
      sides.push_back(std::move(*record));
      return true;
    }
    std::string const problem = report.problem.empty() ? senseless_answer : report.problem;
    if (report.problem.empty()) {
      complain(printable(paths[index]) + ": " + problem);
    }
    auto const [outcome, reason] = failure_of(problem);
    return !json || write_output(json_failure(paths[index], outcome, reason));
  });
  return sides;
}

std::string as_text(double similarity, std::vector<HString> const& shared, WordRecord const& first,
                    WordRecord const& second, std::size_t most) {
  std::string text = styled(Role::heading, fmt::format("{:.1f} %", similarity)) +
                     " of the bits agree: " + meaning(similarity) + "\n";
  text += fmt::format("words: {} and {}, shared: {}\n", first.words.size(), second.words.size(),
                      shared.size());
  for (std::size_t i = 0; i < std::min(most, shared.size()); ++i) {
    text += fmt::format("  {}\n", printable(shared[i]));
  }
  return text;
}

}  // namespace

int run_compare(CompareOptions const& options) {
  std::vector<HString> const paths = {morvabs::from_path(options.first),
                                      morvabs::from_path(options.second)};
  std::vector<WordRecord> const sides = read_sides(paths, options.json);
  if (sides.size() < 2) {
    return some_failed;
  }
  WordRecord const& first = sides[0];
  WordRecord const& second = sides[1];
  double const similarity = HFileMatchDNA::get_dna_similarity(first.dna, second.dna);
  std::vector<HString> const shared = shared_words(first, second);
  bool const too_short = std::min(first.words.size(), second.words.size()) < fewest_words;
  auto const most = static_cast<std::size_t>(options.words);
  std::string output;
  if (options.json) {
    nlohmann::ordered_json object;
    object["files"] = {utf8(paths[0]), utf8(paths[1])};
    object["similarity"] = similarity;
    object["meaning"] = meaning(similarity);
    object["too_short_to_judge"] = too_short;
    object["dna"] = {utf8(first.dna), utf8(second.dna)};
    object["word_counts"] = {first.words.size(), second.words.size()};
    object["shared_count"] = shared.size();
    object["shared"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < std::min(most, shared.size()); ++i) {
      object["shared"].push_back(utf8(shared[i]));
    }
    output = object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  } else {
    output = as_text(similarity, shared, first, second, most);
  }
  if (too_short) {
    complain(fmt::format("warning: a text with fewer than {} different words is too short to judge",
                         fewest_words));
  }
  bool const is_written = options.json ? write_output(output) : show(output);
  return is_written ? all_done : some_failed;
}

}  // namespace tool
