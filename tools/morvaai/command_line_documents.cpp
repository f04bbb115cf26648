#include "command_line.h"

namespace tool {

void add_document_commands(CLI::App& app, Commands& all) {
  CLI::App* command = app.add_subcommand("features", "The words that characterise each file");
  add_run_options(*command, all.features);
  command->add_option("-n,--words", all.features.words, "Number of words, 20 if not given")
      ->check(CLI::Range(1, 100000));
  command->callback([&all] { all.status = run_features(all.features); });

  command = app.add_subcommand("dna", "The fingerprint of each file");
  add_run_options(*command, all.dna);
  command->add_flag("--wide", all.dna.wide, "The wide form, which holds the sum of each bit");
  command->add_flag("--count", all.dna.count, "Also the number of characters that the words cover");
  command->callback([&all] { all.status = run_dna(all.dna); });

  command = app.add_subcommand("compare", "How like two files are, and which words they share");
  command->add_option("FILE1", all.compare.first, "A file")->required();
  command->add_option("FILE2", all.compare.second, "Another file")->required();
  command
      ->add_option("-n,--words", all.compare.words,
                   "Number of shared words to show, 20 if not given")
      ->check(CLI::Range(0, 100000));
  command->add_flag("--json", all.compare.json, "Print one JSON object");
  command->callback([&all] { all.status = run_compare(all.compare); });

  command = app.add_subcommand("text", "The text of each file");
  add_run_options(*command, all.text);
  command->add_option("--kind", all.text.kind, "Kind of text, main if not given")
      ->check(CLI::IsMember(text_kind_names()));
  command->callback([&all] { all.status = run_text(all.text); });

  command = app.add_subcommand("collect", "The records that the agent has of each file");
  add_run_options(*command, all.collect);
  command->callback([&all] { all.status = run_collect(all.collect); });
}

}  // namespace tool
