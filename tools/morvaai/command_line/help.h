#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace tool {

/// The group of the options that most commands have; help shows it behind the others.
inline constexpr char const* common_group = "Common options";

/// Lays out the help of a command for a terminal of 80 columns: what it does, how it is called, its
/// arguments, its options by their groups, and what its footer says. `--help` stands behind all.
///
/// An option shows its value by the name that `option_text` gives it, behind its description the
/// values that it may have, where only those are allowed, and its default, where `default_str`
/// gives one.
std::shared_ptr<CLI::FormatterBase> make_help_formatter();

/// Sets the examples of a command: its footer, with a command line in each line.
void set_examples(CLI::App& command, std::vector<std::string> const& examples,
                  std::string const& note = {});

/// The command that the words name, the program itself if there are none; null where there is none
/// of that name. Commands without a group, which help does not show, have none.
CLI::App const* find_command(CLI::App const& program, std::vector<std::string> const& words);

/// The help of a command, as `--help` shows it.
std::string help_of(CLI::App const& command);

/// A command with its arguments, options, examples and commands of its own, as one JSON object in
/// one line: what manual pages and the completion of command lines are made from.
std::string describe_command(CLI::App const& command);

}  // namespace tool
