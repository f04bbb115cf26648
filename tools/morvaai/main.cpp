#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "command_line.h"

namespace {

// `failure` is the status after an exception.
int run(int argc, char** argv, int& failure) {
  CLI::App app{"Words, fingerprints, likeness and classes of documents.", "morvaai"};
  app.require_subcommand(1);
  app.failure_message(CLI::FailureMessage::help);
  app.footer(
      "Exit status: 0 all files done, 1 some failed, 2 wrong use; of match as grep has it.\n"
      "Examples:\n"
      "  morvaai features report.docx -n 10\n"
      "  morvaai dna --json folder/ > dna.jsonl\n"
      "  morvaai compare old.docx new.pdf\n"
      "  morvaai cluster folder/ --method kmeans -k 8 -o classes/\n"
      "  morvaai learn samples/ --box company --by-folder\n"
      "  morvaai match inbox/ --box company\n"
      "  find . -name '*.pdf' | morvaai text -");
  tool::Commands all;
  tool::add_document_commands(app, all);
  tool::add_corpus_commands(app, all);
  tool::add_box_commands(app, all);
  CLI::App* const command = app.add_subcommand("version", "Versions, and where data is looked for");
  command->add_flag("--json", all.version_json, "Print one JSON object");
  command->callback([&all] { all.status = tool::run_version(all.version_json); });
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    std::ostringstream help;
    bool const is_wanted = app.exit(error, help) == 0;
    if (!tool::write_output(help.str())) {
      return tool::some_failed;
    }
    return is_wanted ? tool::all_done : tool::wrong_use;
  } catch (...) {
    // There, 1 says that no file has a class.
    failure = app.got_subcommand("match") ? tool::wrong_use : failure;
    throw;
  }
  return all.status;
}

// Where standard input, output or error is closed, the next file that is opened would take its
// place, and what is printed would go into that file. What stands there instead can be neither read
// nor written, as a closed one.
void keep_standard_places() {
  for (int const place : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(place, F_GETFD) < 0) {
      open("/dev/null", place == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  keep_standard_places();
  // Every problem has its own line on standard error; the library's log is for those who ask for
  // it.
  if (std::getenv("MORVA_LOG_LEVEL") == nullptr) {
    HFileLog::ins()->mi_level = 0;
  }
  int failure = tool::some_failed;
  try {
    return run(argc, argv, failure);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "morvaai: %s\n", error.what());
    return failure;
  }
}
