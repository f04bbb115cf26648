#include <string>

#include "command_line/command_line.h"
#include "command_line/help.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace tool {

namespace {

int run_help(CLI::App const& program, std::vector<std::string> const& words, bool json) {
  CLI::App const* const command = find_command(program, words);
  if (command == nullptr) {
    complain("there is no command " + printable(HString(CLI::detail::join(words, " ").c_str())) +
             "; morvaai --help lists those there are");
    return wrong_use;
  }
  bool const is_written = write_output(json ? describe_command(*command) : help_of(*command));
  return is_written ? all_done : some_failed;
}

}  // namespace

void add_program_commands(CLI::App& app, Commands& all) {
  CLI::App* command = app.add_subcommand("version", "Versions, and where data is looked for");
  command->group(machine_group);
  add_json_option(*command, all.version_json);
  set_examples(*command, {"morvaai version"});
  command->callback([&all] { all.status = run_version(all.version_json); });

  command = app.add_subcommand("help", "Help on a command, or all commands as JSON");
  command->group(machine_group);
  take_any_number(*command->add_option("COMMAND", all.help.command, "A command, as box add"));
  add_json_option(*command, all.help.json, "Print the commands and their options as a JSON object");
  set_examples(*command, {"morvaai help learn", "morvaai help box add"});
  command->callback([&app, &all] { all.status = run_help(app, all.help.command, all.help.json); });

  // What shells ask for while a command line is being typed: in no group, it is not shown.
  command = app.add_subcommand("complete", "Names of boxes, or of the classes of boxes");
  command->group("");
  take_any_number(
      *command->add_option("WHAT", all.completed, "boxes, or classes and the boxes that have them"))
      .required();
  command->callback([&all] { all.status = run_complete(all.completed); });
}

}  // namespace tool
