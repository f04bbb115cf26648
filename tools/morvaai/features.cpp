#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "document.h"

namespace tool {

namespace {

std::string as_table(HString const& path, std::vector<WordNode> const& words) {
  std::string table = printable(path) + "\n";
  for (WordNode const& node : words) {
    table += fmt::format("  {:.6f} {:>6}  {:<5} {}\n", node.weight, node.count, printable(node.tag),
                         printable(node.word));
  }
  return table;
}

std::string as_json(HString const& path, Document const& document,
                    std::vector<WordNode> const& words) {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["outcome"] = document.outcome_name();
  object["words"] = nlohmann::ordered_json::array();
  for (WordNode const& node : words) {
    object["words"].push_back({{"word", utf8(node.word)},
                               {"count", node.count},
                               {"weight", node.weight},
                               {"tag", utf8(node.tag)}});
  }
  return object.dump() + "\n";
}

FileReport report_features(HString const& path, FeaturesOptions const& options) {
  Document const document(path);
  if (auto report = document.failure(path, options.json)) {
    return *report;
  }
  std::vector<WordNode> words;
  if (!HFileWordNode::get_file_word_node(document.main_text(), path, words, options.words)) {
    return no_dictionary(path, options.json);
  }
  return {options.json ? as_json(path, document, words) : as_table(path, words),
          document.incompleteness()};
}

}  // namespace

int run_features(FeaturesOptions const& options) {
  return print_on_files(options,
                        [&](HString const& path) { return report_features(path, options); });
}

}  // namespace tool
