#include <algorithm>
#include <map>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "document.h"

namespace tool {

namespace {

// Below this many different words chance decides too many of the bits.
constexpr std::size_t fewest_words = 50;
constexpr int narrow_length = 32;

struct Side {
  HString dna;
  std::vector<WordNode> words;
};

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
std::vector<HString> shared_words(Side const& first, Side const& second) {
  std::map<HString, double> weights;
  for (WordNode const& node : first.words) {
    weights[node.word] = node.weight;
  }
  std::map<HString, double> shared;
  for (WordNode const& node : second.words) {
    if (auto const found = weights.find(node.word); found != weights.end()) {
      shared[node.word] = std::min(found->second, node.weight);
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

bool read_side(std::string const& argument, Side& side) {
  HString const path = morvabs::from_path(argument);
  Document const document(path);
  auto const complain = [&path](std::string const& problem) {
    std::fprintf(stderr, "morvaai: %s: %s\n", printable(path).c_str(), problem.c_str());
  };
  if (auto report = document.failure(path, false)) {
    complain(report->problem);
    return false;
  }
  if (!HFileWordNode::get_file_word_node(document.main_text(), path, side.words, 0)) {
    complain(no_dictionary(path, false).problem);
    return false;
  }
  if (!HFileDNA::get_file_dna(document.parser(), side.dna, nullptr, narrow_length)) {
    complain(no_words(path, false).problem);
    return false;
  }
  if (std::string const missing = document.incompleteness(); !missing.empty()) {
    complain(missing);
  }
  return true;
}

std::string as_text(double similarity, std::vector<HString> const& shared, Side const& first,
                    Side const& second, std::size_t most) {
  std::string text =
      fmt::format("{:.1f} % of the bits agree: {}\n", similarity, meaning(similarity));
  text += fmt::format("words: {} and {}, shared: {}\n", first.words.size(), second.words.size(),
                      shared.size());
  for (std::size_t i = 0; i < std::min(most, shared.size()); ++i) {
    text += fmt::format("  {}\n", printable(shared[i]));
  }
  return text;
}

}  // namespace

int run_compare(CompareOptions const& options) {
  Side first;
  Side second;
  bool const first_read = read_side(options.first, first);
  bool const second_read = read_side(options.second, second);
  if (!first_read || !second_read) {
    return some_failed;
  }
  double const similarity = HFileMatchDNA::get_dna_similarity(first.dna, second.dna);
  std::vector<HString> const shared = shared_words(first, second);
  bool const too_short = std::min(first.words.size(), second.words.size()) < fewest_words;
  auto const most = static_cast<std::size_t>(options.words);
  std::string output;
  if (options.json) {
    nlohmann::ordered_json object;
    object["files"] = {options.first, options.second};
    object["similarity"] = similarity;
    object["meaning"] = meaning(similarity);
    object["too_short_to_judge"] = too_short;
    object["dna"] = {utf8(first.dna), utf8(second.dna)};
    object["words"] = {first.words.size(), second.words.size()};
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
    std::fprintf(
        stderr,
        "morvaai: warning: a text with fewer than %zu different words is too short to judge\n",
        fewest_words);
  }
  return write_output(output) ? all_done : some_failed;
}

}  // namespace tool
