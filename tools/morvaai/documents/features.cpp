#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "documents/run_on_files.h"
#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

std::string as_table(HString const& path, std::vector<WordNode> const& words) {
  Table table({Align::decimal, {Align::right, 5}, {Align::left, 4}, Align::left}, 2);
  if (output_screen().is_terminal) {
    table.set_titles({"weight", "count", "tag", "word"});
  }
  for (WordNode const& node : words) {
    table.add({fmt::format("{:.6f}", node.weight),
               std::to_string(node.count),
               {printable(node.tag), Role::faint},
               printable(node.word)});
  }
  return styled(Role::heading, printable(path)) + "\n" + table.text();
}

std::string as_json(HString const& path, Document const& document,
                    std::vector<WordNode> const& words) {
  nlohmann::ordered_json object = json_head(path, document);
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
