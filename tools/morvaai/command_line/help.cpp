#include "command_line/help.h"

#include <algorithm>
#include <sstream>

#include <nlohmann/json.hpp>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t line_width = 80;
constexpr std::size_t widest_left_column = 26;
constexpr std::size_t longest_command = 8;

/// The text in lines that end before the width, all but the first with the indent before them.
std::string wrapped(std::string const& text, std::size_t indent) {
  std::istringstream in(text);
  std::string all;
  std::size_t column = indent;
  for (std::string word; in >> word;) {
    bool const is_first = column == indent;
    if (!is_first && column + 1 + word.size() > line_width) {
      all += "\n" + std::string(indent, ' ') + word;
      column = indent + word.size();
      continue;
    }
    all += (is_first ? "" : " ") + word;
    column += word.size() + (is_first ? 0 : 1);
  }
  return all + "\n";
}

/// Columns that the name of a row takes, if it is no longer than most.
std::size_t left_column(std::string const& name) {
  return std::min(name.size(), widest_left_column);
}

/// A list of names with what is said of each, in two columns, of which the first has that width.
std::string two_columns(std::vector<std::pair<std::string, std::string>> const& rows,
                        std::size_t left) {
  std::size_t const indent = 2 + left + 2;
  std::string text;
  for (auto const& [name, about] : rows) {
    text += "  " + name;
    text += name.size() > left ? "\n" + std::string(indent, ' ')
                               : std::string(left + 2 - name.size(), ' ');
    text += wrapped(about, indent);
  }
  return text;
}

bool is_shown(CLI::Option const* option) {
  return !option->get_group().empty();
}

/// The values that an option may have, where they are names: a check on a list describes itself as
/// "{one,other}".
std::vector<std::string> values_of(CLI::Option const& option) {
  std::string const type = option.get_type_name();
  std::size_t const begin = type.find('{');
  std::size_t const end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

/// Whether the option may have other values too.
bool is_open(CLI::Option const& option) {
  return option.get_type_name().find(" OR ") != std::string::npos;
}

bool is_repeated(CLI::Option const& option) {
  return option.get_items_expected_max() > 1;
}

std::string value_name(CLI::Option const& option) {
  return option.get_items_expected_max() == 0 ? std::string() : option.get_option_text();
}

/// "-k N", "    --json": the long names stand below each other.
std::string option_name(CLI::Option const& option) {
  std::string name;
  for (std::string const& letter : option.get_snames()) {
    name += (name.empty() ? "-" : ", -") + letter;
  }
  if (name.empty()) {
    name = "    ";
  } else if (!option.get_lnames().empty()) {
    name += ", ";
  }
  for (std::string const& word : option.get_lnames()) {
    name += (&word == option.get_lnames().data() ? "--" : ", --") + word;
  }
  std::string const value = value_name(option);
  return value.empty() ? name : name + " " + value;
}

std::string argument_name(CLI::Option const& argument) {
  std::string const name = argument.get_name(true, false) + (is_repeated(argument) ? "..." : "");
  return argument.get_required() ? name : "[" + name + "]";
}

std::string about_option(CLI::Option const& option) {
  std::string about = option.get_description();
  std::vector<std::string> const values = values_of(option);
  if (!values.empty() && !is_open(option)) {
    about += ": " + CLI::detail::join(values, ", ");
  }
  if (!option.get_default_str().empty()) {
    about += " [default: " + option.get_default_str() + "]";
  }
  return about;
}

std::vector<CLI::Option const*> arguments_of(CLI::App const& command) {
  return command.get_options(
      [](CLI::Option const* option) { return is_shown(option) && option->get_positional(); });
}

std::vector<CLI::Option const*> options_of(CLI::App const& command) {
  return command.get_options(
      [](CLI::Option const* option) { return is_shown(option) && option->nonpositional(); });
}

std::vector<CLI::App const*> commands_of(CLI::App const& command) {
  return command.get_subcommands(
      [](CLI::App const* one) { return !one->get_group().empty() && !one->get_name().empty(); });
}

std::string usage_of(CLI::App const& command, std::string const& name) {
  std::string usage = name;
  if (!commands_of(command).empty()) {
    usage += " COMMAND";
  }
  for (CLI::Option const* option : options_of(command)) {
    if (option->get_required()) {
      usage += " " + option->get_name() + " " + value_name(*option);
    }
  }
  usage += " [OPTION...]";
  for (CLI::Option const* argument : arguments_of(command)) {
    usage += " " + argument_name(*argument);
  }
  return usage;
}

/// Groups in the order in which they are met, each with its members.
template <typename Member>
using Groups = std::vector<std::pair<std::string, std::vector<Member const*>>>;

template <typename Member, typename GroupOf>
Groups<Member> grouped(std::vector<Member const*> const& members, GroupOf const& group_of) {
  Groups<Member> groups;
  for (Member const* member : members) {
    std::string const name = group_of(*member);
    auto found = std::find_if(groups.begin(), groups.end(),
                              [&name](auto const& group) { return group.first == name; });
    if (found == groups.end()) {
      found = groups.insert(groups.end(), {name, {}});
    }
    found->second.push_back(member);
  }
  return groups;
}

Groups<CLI::App> command_groups(CLI::App const& command) {
  return grouped(commands_of(command), [](CLI::App const& one) { return one.get_group(); });
}

/// What all commands have comes last, and of that what asks for help.
Groups<CLI::Option> option_groups(CLI::App const& command) {
  std::vector<CLI::Option const*> options = options_of(command);
  auto const group_of = [&command](CLI::Option const& option) {
    return &option == command.get_help_ptr() ? std::string(common_group) : option.get_group();
  };
  auto const rank = [&](CLI::Option const* option) {
    return (group_of(*option) == common_group ? 1 : 0) + (option == command.get_help_ptr() ? 1 : 0);
  };
  std::stable_sort(
      options.begin(), options.end(),
      [&rank](CLI::Option const* a, CLI::Option const* b) { return rank(a) < rank(b); });
  return grouped(options, group_of);
}

std::string shown_commands(CLI::App const& command) {
  std::string text;
  for (auto const& [group, commands] : command_groups(command)) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (CLI::App const* one : commands) {
      rows.emplace_back(one->get_name(), one->get_description());
    }
    text += group + ":\n" + two_columns(rows, longest_command);
  }
  return text;
}

std::string shown_options(CLI::App const& command) {
  std::size_t left = 0;
  for (CLI::Option const* argument : arguments_of(command)) {
    left = std::max(left, left_column(argument->get_name(true, false)));
  }
  for (CLI::Option const* option : options_of(command)) {
    left = std::max(left, left_column(option_name(*option)));
  }
  std::vector<std::pair<std::string, std::string>> rows;
  for (CLI::Option const* argument : arguments_of(command)) {
    rows.emplace_back(argument->get_name(true, false), about_option(*argument));
  }
  std::string text = two_columns(rows, left);
  for (auto const& [group, options] : option_groups(command)) {
    rows.clear();
    for (CLI::Option const* option : options) {
      rows.emplace_back(option_name(*option), about_option(*option));
    }
    text += group + ":\n" + two_columns(rows, left);
  }
  return text;
}

class HelpFormatter : public CLI::FormatterBase {
 public:
  std::string make_help(CLI::App const* command, std::string name,
                        CLI::AppFormatMode /*mode*/) const override {
    std::string text = "Usage: " + usage_of(*command, name) + "\n" +
                       wrapped(command->get_description() + ".", 0) + "\n" +
                       shown_commands(*command) + shown_options(*command);
    std::string const footer = command->get_footer();
    return footer.empty() ? text : text + "\n" + footer + "\n";
  }
};

std::vector<std::string> examples_of(CLI::App const& command) {
  std::vector<std::string> examples;
  for (std::string const& line : CLI::detail::split(command.get_footer(), '\n')) {
    if (line.starts_with("  ")) {
      examples.push_back(line.substr(2));
    }
  }
  return examples;
}

Json described(CLI::Option const& option) {
  std::vector<std::string> names;
  for (std::string const& letter : option.get_snames()) {
    names.push_back("-" + letter);
  }
  for (std::string const& word : option.get_lnames()) {
    names.push_back("--" + word);
  }
  Json object;
  if (names.empty()) {
    object["name"] = option.get_name(true, false);
  } else {
    object["names"] = names;
    object["value"] = value_name(option).empty() ? Json(nullptr) : Json(value_name(option));
  }
  object["about"] = option.get_description();
  object["values"] = values_of(option);
  object["other_values"] = is_open(option);
  object["default"] =
      option.get_default_str().empty() ? Json(nullptr) : Json(option.get_default_str());
  object["required"] = option.get_required();
  object["repeated"] = is_repeated(option);
  return object;
}

std::string full_name(CLI::App const& command) {
  CLI::App const* const parent = command.get_parent();
  return (parent == nullptr ? std::string() : full_name(*parent) + " ") + command.get_name();
}

Json described(CLI::App const& command) {
  Json object;
  object["name"] = command.get_name();
  object["about"] = command.get_description();
  object["group"] = command.get_parent() == nullptr ? Json(nullptr) : Json(command.get_group());
  object["usage"] = usage_of(command, full_name(command));
  object["arguments"] = Json::array();
  for (CLI::Option const* argument : arguments_of(command)) {
    object["arguments"].push_back(described(*argument));
  }
  object["options"] = Json::array();
  for (auto const& [group, options] : option_groups(command)) {
    for (CLI::Option const* option : options) {
      object["options"].push_back(described(*option));
      object["options"].back()["group"] = group;
    }
  }
  object["examples"] = examples_of(command);
  object["commands"] = Json::array();
  for (CLI::App const* one : commands_of(command)) {
    object["commands"].push_back(described(*one));
  }
  return object;
}

}  // namespace

std::shared_ptr<CLI::FormatterBase> make_help_formatter() {
  return std::make_shared<HelpFormatter>();
}

void set_examples(CLI::App& command, std::vector<std::string> const& examples,
                  std::string const& note) {
  std::string footer = examples.size() == 1 ? "Example:" : "Examples:";
  for (std::string const& example : examples) {
    footer += "\n  " + example;
  }
  command.footer(note.empty() ? footer : footer + "\n" + note);
}

CLI::App const* find_command(CLI::App const& program, std::vector<std::string> const& words) {
  CLI::App const* found = &program;
  for (std::string const& word : words) {
    std::vector<CLI::App const*> const commands = commands_of(*found);
    auto const named = std::find_if(commands.begin(), commands.end(), [&word](CLI::App const* one) {
      return one->get_name() == word;
    });
    if (named == commands.end()) {
      return nullptr;
    }
    found = *named;
  }
  return found;
}

std::string help_of(CLI::App const& command) {
  return command.get_formatter()->make_help(&command, full_name(command),
                                            CLI::AppFormatMode::Normal);
}

std::string describe_command(CLI::App const& command) {
  return described(command).dump() + "\n";
}

}  // namespace tool
