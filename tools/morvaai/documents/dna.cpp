#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command_line/commands.h"
#include "documents/document.h"
#include "documents/run_on_files.h"
#include "terminal/output.h"

namespace tool {

namespace {

std::string as_line(HString const& path, std::string const& dna, std::string const& count) {
  std::string const before = dna + "  " + count;
  return before + shown_path(path, before.size()) + "\n";
}

FileReport report_dna(HString const& path, DnaOptions const& options) {
  Document const document(path);
  if (auto report = document.failure(path, options.json)) {
    return *report;
  }
  HString dna;
  int count = 0;
  int const digits = options.wide ? wide_dna : narrow_dna;
  if (auto report = take_dna(document, path, digits, options.json, dna, &count)) {
    return *report;
  }
  if (options.json) {
    nlohmann::ordered_json object = json_head(path, document);
    object["dna"] = utf8(dna);
    object["character_count"] = count;
    return {object.dump() + "\n", document.incompleteness()};
  }
  return {as_line(path, utf8(dna), options.count ? fmt::format("{:>8}  ", count) : std::string()),
          document.incompleteness()};
}

}  // namespace

int run_dna(DnaOptions const& options) {
  return print_on_files(options, [&](HString const& path) { return report_dna(path, options); });
}

}  // namespace tool
