#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "command_line/commands.h"
#include "documents/run_on_files.h"
#include "exit_status.h"

namespace tool {

/// The options of all commands, of which one runs while the command line is read, and the status
/// that it leaves.
struct Commands {
  FeaturesOptions features;
  DnaOptions dna;
  CompareOptions compare;
  SimilarOptions similar;
  TextOptions text;
  RunOptions collect;
  ClusterOptions cluster;
  std::string console_method;
  SuggestOptions suggest;
  ExtractOptions extract;
  MergeOptions merge;
  LearnOptions learn;
  MatchOptions match;
  ReportOptions report;
  BoxOptions box;
  BoxAddOptions box_add;
  BoxDumpOptions box_dump;
  bool version_json = false;
  struct Help {
    std::vector<std::string> command;
    bool json = false;
  } help;
  std::vector<std::string> completed;
  int status = all_done;
};

/// All commands, and what the program itself takes.
void add_commands(CLI::App& app, Commands& all);

/// The commands that say something of each file.
void add_document_commands(CLI::App& app, Commands& all);
/// The commands that look at many files together, or at each by what was learnt from many.
void add_corpus_commands(CLI::App& app, Commands& all);
/// The commands on boxes.
void add_box_commands(CLI::App& app, Commands& all);
/// The commands about the program.
void add_program_commands(CLI::App& app, Commands& all);

/// The groups of commands.
inline constexpr char const* document_group = "What a file says";
inline constexpr char const* class_group = "Classes of files";
inline constexpr char const* machine_group = "This machine";

/// Has the argument be any number of words, each taken as it is: CLI11 would take one in brackets
/// for a list of several.
CLI::Option& take_any_number(CLI::Option& argument);

/// What commands over many files share: the files, `--json` and `--jobs`.
void add_run_options(CLI::App& command, RunOptions& options,
                     char const* json_help = "Print one JSON object a line for each file");
/// `--json` alone.
void add_json_option(CLI::App& command, bool& is_wanted,
                     char const* about = "Print one JSON object");

}  // namespace tool
