#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands.h"

namespace tool {

/// The options of all commands, of which one runs while the command line is read, and the status
/// that it leaves.
struct Commands {
  FeaturesOptions features;
  DnaOptions dna;
  CompareOptions compare;
  TextOptions text;
  RunOptions collect;
  ClusterOptions cluster;
  std::string console_method;
  LearnOptions learn;
  MatchOptions match;
  BoxOptions box;
  BoxAddOptions box_add;
  BoxDumpOptions box_dump;
  bool version_json = false;
  int status = all_done;
};

/// The commands that say something of each file.
void add_document_commands(CLI::App& app, Commands& all);
/// The commands that look at many files together, or at each by what was learnt from many.
void add_corpus_commands(CLI::App& app, Commands& all);
/// The commands on boxes.
void add_box_commands(CLI::App& app, Commands& all);

/// What commands over many files share: the files, `--json` and `--jobs`.
void add_run_options(CLI::App& command, RunOptions& options,
                     char const* json_help = "Print one JSON object a line for each file");

}  // namespace tool
