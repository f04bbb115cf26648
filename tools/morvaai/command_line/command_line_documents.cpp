#include "command_line/command_line.h"
#include "command_line/help.h"

namespace tool {

namespace {

CLI::App* add_command(CLI::App& app, char const* name, char const* about) {
  CLI::App* const command = app.add_subcommand(name, about);
  command->group(document_group);
  return command;
}

void add_features(CLI::App& app, Commands& all) {
  CLI::App* const command =
      add_command(app, "features", "The words that characterise each file, the weightiest first");
  add_run_options(*command, all.features);
  command->add_option("-n,--words", all.features.words, "Words shown of each file, at most")
      ->option_text("N")
      ->default_str("20")
      ->check(CLI::Range(1, 100000));
  set_examples(*command, {"morvaai features samples/harbour-report.docx -n 10",
                          "morvaai features samples/软件开发合同.pdf --json"});
  command->callback([&all] { all.status = run_features(all.features); });
}

void add_dna(CLI::App& app, Commands& all) {
  CLI::App* const command =
      add_command(app, "dna", "The fingerprint of each file: 128 bits, as 32 hexadecimal digits");
  add_run_options(*command, all.dna);
  command->add_flag("--wide", all.dna.wide, "The wide form: 1024 digits, the sum behind each bit");
  command->add_flag("--count", all.dna.count, "Also the number of characters that the words cover");
  set_examples(*command, {"morvaai dna samples/*.docx --count",
                          "find samples -name '*.pdf' | morvaai dna - --json"});
  command->callback([&all] { all.status = run_dna(all.dna); });
}

void add_compare(CLI::App& app, Commands& all) {
  CLI::App* const command =
      add_command(app, "compare", "How like two files are, and which words they share");
  command->add_option("FILE1", all.compare.first, "A file")->required();
  command->add_option("FILE2", all.compare.second, "Another file")->required();
  command->add_option("-n,--words", all.compare.words, "Shared words shown, at most")
      ->option_text("N")
      ->default_str("20")
      ->check(CLI::Range(0, 100000));
  add_json_option(*command, all.compare.json);
  set_examples(*command,
               {"morvaai compare samples/harbour-report.docx samples/travel-policy.odt",
                "morvaai compare samples/软件开发合同.docx samples/软件开发合同.pdf -n 5"},
               "Unrelated texts agree in about 50 % of the bits.");
  command->callback([&all] { all.status = run_compare(all.compare); });
}

void add_text(CLI::App& app, Commands& all) {
  CLI::App* const command = add_command(app, "text", "The text of each file");
  add_run_options(*command, all.text);
  command->add_option("--kind", all.text.kind, "Kind of text")
      ->option_text("KIND")
      ->default_str("main")
      ->check(CLI::IsMember(text_kind_names()));
  set_examples(*command, {"morvaai text samples/travel-policy.odt",
                          "morvaai text samples/launch.pptx --kind notes",
                          "morvaai text samples/launch.pptx --kind all --json"});
  command->callback([&all] { all.status = run_text(all.text); });
}

void add_collect(CLI::App& app, Commands& all) {
  CLI::App* const command =
      add_command(app, "collect", "The records that an agent keeps of each file");
  add_run_options(*command, all.collect);
  set_examples(*command, {"morvaai collect samples/budget.xlsx",
                          "morvaai collect samples/ --json > records.jsonl"});
  command->callback([&all] { all.status = run_collect(all.collect); });
}

}  // namespace

void add_document_commands(CLI::App& app, Commands& all) {
  add_features(app, all);
  add_dna(app, all);
  add_compare(app, all);
  add_text(app, all);
  add_collect(app, all);
}

}  // namespace tool
