#include <algorithm>
#include <array>
#include <utility>

#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "documents/failure.h"
#include "documents/run_on_files.h"
#include "terminal/output.h"

namespace tool {

namespace {

constexpr std::array<std::pair<char const*, Orlec::ParseTextType>, 9> kinds = {{
    {"main", Orlec::ParseTextType_main},
    {"header", Orlec::ParseTextType_hf},
    {"comment", Orlec::ParseTextType_comment},
    {"notes", Orlec::ParseTextType_remark},
    {"footnote", Orlec::ParseTextType_fn},
    {"endnote", Orlec::ParseTextType_en},
    {"control", Orlec::ParseTextType_control},
    {"property", Orlec::ParseTextType_property},
    {"other", Orlec::ParseTextType_other},
}};

nlohmann::ordered_json json_counts(Orlec::ParseCounts const& counts) {
  return {{"lines", counts.i_line},
          {"pages", counts.i_page},
          {"images", counts.i_img},
          {"embedded", counts.i_embed}};
}

FileReport report_text(HString const& path, TextOptions const& options) {
  Document const document(path);
  std::string text;
  nlohmann::ordered_json texts;
  for (auto const& [name, type] : kinds) {
    if (options.kind != "all" && options.kind != name) {
      continue;
    }
    std::string const part = utf8(document.text(type));
    texts[name] = part;
    text += part;
    if (!part.empty() && part.back() != '\n') {
      text += '\n';
    }
  }
  // What was read of a damaged document is shown as well, so that nothing is lost.
  std::string const problem = document.is_read()
                                  ? document.incompleteness()
                                  : document.outcome_name() + ": " + document.reason();
  if (!options.json) {
    return {text, problem};
  }
  if (!document.is_read() && text.empty()) {
    return {json_failure(path, document.outcome_name(), document.reason()), problem};
  }
  nlohmann::ordered_json object = json_head(path, document);
  object["counts"] = json_counts(document.parser()->GetCounts());
  object["text"] = std::move(texts);
  return {object.dump() + "\n", problem};
}

}  // namespace

std::vector<std::string> text_kind_names() {
  std::vector<std::string> names;
  names.reserve(kinds.size() + 1);
  for (auto const& kind : kinds) {
    names.emplace_back(kind.first);
  }
  names.emplace_back("all");
  return names;
}

int run_text(TextOptions const& options) {
  WorkerNeeds needs;
  needs.words = false;
  return print_on_files(
      options, [&](HString const& path) { return report_text(path, options); }, needs,
      Printed::document);
}

}  // namespace tool
