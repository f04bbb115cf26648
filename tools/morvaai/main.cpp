#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <thread>

#include <CLI/CLI.hpp>

#include "commands.h"

namespace {

void add_run_options(CLI::App& command, tool::RunOptions& options) {
  options.jobs = std::max(1U, std::thread::hardware_concurrency());
  command
      .add_option("FILE", options.inputs,
                  "Files, folders, or - for a list of paths on standard input")
      ->required();
  command.add_flag("--json", options.json, "Print one JSON object a line for each file");
  command
      .add_option("-j,--jobs", options.jobs,
                  "Worker processes; the number of processors if not given")
      ->check(CLI::Range(std::size_t{1}, std::size_t{256}));
}

int run(int argc, char** argv) {
  CLI::App app{"Words, fingerprints and likeness of documents.", "morvaai"};
  app.require_subcommand(1);
  app.failure_message(CLI::FailureMessage::help);
  app.footer(
      "Exit status: 0 all files done, 1 some failed, 2 wrong use.\n"
      "Examples:\n"
      "  morvaai features report.docx -n 10\n"
      "  morvaai dna --json folder/ > dna.jsonl\n"
      "  morvaai compare old.docx new.pdf\n"
      "  find . -name '*.pdf' | morvaai text -");
  int status = tool::all_done;

  tool::FeaturesOptions features;
  CLI::App* command = app.add_subcommand("features", "The words that characterise each file");
  add_run_options(*command, features);
  command->add_option("-n,--words", features.words, "Number of words, 20 if not given")
      ->check(CLI::Range(1, 100000));
  command->callback([&] { status = tool::run_features(features); });

  tool::DnaOptions dna;
  command = app.add_subcommand("dna", "The fingerprint of each file");
  add_run_options(*command, dna);
  command->add_flag("--wide", dna.wide, "The wide form, which holds the sum of each bit");
  command->add_flag("--count", dna.count, "Also the number of characters that the words cover");
  command->callback([&] { status = tool::run_dna(dna); });

  tool::CompareOptions compare;
  command = app.add_subcommand("compare", "How like two files are, and which words they share");
  command->add_option("FILE1", compare.first, "A file")->required();
  command->add_option("FILE2", compare.second, "Another file")->required();
  command
      ->add_option("-n,--words", compare.words, "Number of shared words to show, 20 if not given")
      ->check(CLI::Range(0, 100000));
  command->add_flag("--json", compare.json, "Print one JSON object");
  command->callback([&] { status = tool::run_compare(compare); });

  tool::TextOptions text;
  command = app.add_subcommand("text", "The text of each file");
  add_run_options(*command, text);
  command->add_option("--kind", text.kind, "Kind of text, main if not given")
      ->check(CLI::IsMember(tool::text_kind_names()));
  command->callback([&] { status = tool::run_text(text); });

  bool version_json = false;
  command = app.add_subcommand("version", "Versions, and where data is looked for");
  command->add_flag("--json", version_json, "Print one JSON object");
  command->callback([&] { status = tool::run_version(version_json); });

  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    return app.exit(error) == 0 ? tool::all_done : tool::wrong_use;
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  // Every problem has its own line on standard error; the library's log is for those who ask for
  // it.
  if (std::getenv("MORVA_LOG_LEVEL") == nullptr) {
    HFileLog::ins()->mi_level = 0;
  }
  try {
    return run(argc, argv);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "morvaai: %s\n", error.what());
    return tool::some_failed;
  }
}
