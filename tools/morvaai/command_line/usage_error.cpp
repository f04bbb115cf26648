#include "command_line/usage_error.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "terminal/output.h"

namespace tool {

namespace {

/// The command that was being read, and its name with those of the commands that it belongs to.
struct Reached {
  CLI::App const* command;
  std::string name;
};

Reached reached_command(CLI::App const& program) {
  Reached reached{&program, program.get_name()};
  for (auto under = program.get_subcommands(); !under.empty();
       under = reached.command->get_subcommands()) {
    reached.command = under.front();
    reached.name += " " + reached.command->get_name();
  }
  return reached;
}

/// How many characters have to be inserted, deleted, exchanged, or swapped with their neighbour to
/// come from one word to the other: the distance of Damerau (1964) in its restricted form.
std::size_t edit_distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> before_last;
  std::vector<std::size_t> last(other.size() + 1);
  for (std::size_t j = 0; j <= other.size(); ++j) {
    last[j] = j;
  }
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::vector<std::size_t> row(other.size() + 1, i);
    for (std::size_t j = 1; j <= other.size(); ++j) {
      std::size_t const exchanged = last[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      row[j] = std::min({row[j - 1] + 1, last[j] + 1, exchanged});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        row[j] = std::min(row[j], before_last[j - 2] + 1);
      }
    }
    before_last = std::exchange(last, std::move(row));
  }
  return last.back();
}

/// The word that was most likely meant; empty where none is near.
std::string nearest(std::string const& typed, std::vector<std::string> const& words) {
  constexpr std::size_t longest = 40;
  std::string best;
  std::size_t least = std::min(typed.size(), longest) / 3 + 1;
  for (std::string const& word : words) {
    bool const is_begun = typed.size() > 2 && word.starts_with(typed);
    std::size_t const distance =
        is_begun || typed.size() > longest ? (is_begun ? 0 : least) : edit_distance(typed, word);
    if (distance < least) {
      least = distance;
      best = word;
    }
  }
  return best;
}

std::vector<std::string> names_of_commands(CLI::App const& command) {
  std::vector<std::string> names;
  for (CLI::App const* const one : command.get_subcommands(nullptr)) {
    if (!one->get_group().empty()) {
      names.push_back(one->get_name());
    }
  }
  return names;
}

std::vector<std::string> names_of_options(CLI::App const& program, CLI::App const& command) {
  std::vector<std::string> names;
  for (CLI::App const* const one : {&command, &program}) {
    for (CLI::Option const* const option : one->get_options()) {
      for (std::string const& name : option->get_lnames()) {
        names.push_back("--" + name);
      }
    }
  }
  return names;
}

std::string quoted(std::string const& argument) {
  return "'" + printable(morvabs::from_path(argument)) + "'";
}

std::string suggestion(std::string const& meant) {
  return meant.empty() ? std::string() : "; did you mean " + meant + "?";
}

std::string about_unexpected(std::string const& argument, Reached const& reached,
                             CLI::App const& program) {
  if (argument.starts_with("-") && argument != "-") {
    std::string const name = argument.substr(0, argument.find('='));
    return "there is no option " + quoted(name) +
           suggestion(nearest(name, names_of_options(program, *reached.command)));
  }
  if (reached.command->get_require_subcommand_min() > 0) {
    return "there is no command " + quoted(argument) +
           suggestion(nearest(argument, names_of_commands(*reached.command)));
  }
  return quoted(argument) + " is one argument too many";
}

/// What the reader of command lines says, in the words of this program.
std::string about_value(std::string message) {
  auto const replace = [&message](std::string_view what, std::string_view with) {
    if (auto const at = message.find(what); at != std::string::npos) {
      message.replace(at, what.size(), with);
    }
  };
  replace("A subcommand is required", "a command is needed");
  // Of a value that may be one of several kinds, what it is not of the first is told.
  if (auto const begin = message.find(": ("), end = message.find(") OR (");
      begin != std::string::npos && end != std::string::npos) {
    message = message.substr(0, begin + 2) + message.substr(begin + 3, end - begin - 3);
  }
  if (auto const end = message.find(": 1 required "); end != std::string::npos) {
    message = message.substr(0, end) + " needs a value";
  }
  replace(" is required", " is missing");
  replace("Value ", "");
  replace(" not in range ", " is not in the range of ");
  replace(" not in {", " is none of ");
  std::erase(message, '}');
  for (std::size_t at = message.find(','); at != std::string::npos;
       at = message.find(',', at + 2)) {
    message.replace(at, 1, ", ");
  }
  return printable(HString(morvabs::from_utf8(message).c_str()));
}

}  // namespace

std::string explain_wrong_use(CLI::ParseError const& error, CLI::App const& program) {
  Reached const reached = reached_command(program);
  std::vector<std::string> const unexpected = program.remaining(true);
  std::string const problem = unexpected.empty()
                                  ? about_value(error.what())
                                  : about_unexpected(unexpected.front(), reached, program);
  return problem + (problem.ends_with('?') ? " " : "; ") + reached.name + " --help tells more";
}

}  // namespace tool
