#include "command_line/command_line.h"
#include "command_line/help.h"

namespace tool {

namespace {

CLI::App* add_command(CLI::App& box, char const* name, char const* about) {
  CLI::App* const command = box.add_subcommand(name, about);
  command->group("Commands");
  return command;
}

void add_id(CLI::App& command, BoxOptions& options, bool is_one) {
  CLI::Option* const id = command.add_option(
      "BOX", options.ids, is_one ? "Name of a box" : "Names of boxes; without any, all boxes");
  if (is_one) {
    id->required()->expected(1)->allow_extra_args(false);
  } else {
    take_any_number(*id);
  }
}

void add_box_json(CLI::App& command, bool& json) {
  add_json_option(command, json, "Print one JSON object a line for each box");
}

void add_box_add(CLI::App& box, Commands& all) {
  CLI::App* const command = add_command(box, "add", "Installs a box file on this machine");
  command->add_option("FILE", all.box_add.file, "A box file")->required();
  command->add_option("--id", all.box_add.id, "Name of the box, without slashes and dots")
      ->option_text("BOX")
      ->default_str("that of the file");
  command->add_flag("--force", all.box_add.force, "Replace a box of that name");
  add_box_json(*command, all.box_add.json);
  set_examples(*command, {"morvaai box add company.box",
                          "morvaai box add received/0815.box --id company --force"});
  command->callback([&all] { all.status = run_box_add(all.box_add); });
}

void add_box_dump(CLI::App& box, Commands& all) {
  CLI::App* const command = add_command(box, "dump", "What a box file holds");
  command->add_option("FILE", all.box_dump.file, "A box file")->required();
  add_json_option(*command, all.box_dump.json, "Print one JSON object, which tells everything");
  set_examples(*command, {"morvaai box dump company.box", "morvaai box dump company.box --json"});
  command->callback([&all] { all.status = run_box_dump(all.box_dump); });
}

}  // namespace

void add_box_commands(CLI::App& app, Commands& all) {
  CLI::App* const box = app.add_subcommand("box", "The boxes of this machine, and box files");
  box->group(machine_group);
  box->require_subcommand(1);
  CLI::App* command = add_command(*box, "list", "The boxes of this machine");
  add_box_json(*command, all.box.json);
  set_examples(*command, {"morvaai box list"});
  command->callback([&all] { all.status = run_box_list(all.box.json); });

  command = add_command(*box, "show", "A box of this machine, its classes and their words");
  add_id(*command, all.box, true);
  add_box_json(*command, all.box.json);
  set_examples(*command, {"morvaai box show company"});
  command->callback([&all] { all.status = run_box_show(all.box); });

  add_box_add(*box, all);
  command = add_command(*box, "remove", "Removes a box of this machine, and its file");
  add_id(*command, all.box, true);
  add_box_json(*command, all.box.json);
  set_examples(*command, {"morvaai box remove company"});
  command->callback([&all] { all.status = run_box_remove(all.box); });

  command = add_command(*box, "verify", "Tells where boxes are not what the index says of them");
  add_id(*command, all.box, false);
  add_box_json(*command, all.box.json);
  set_examples(*command, {"morvaai box verify", "morvaai box verify company"});
  command->callback([&all] { all.status = run_box_verify(all.box); });

  add_box_dump(*box, all);
  set_examples(*box, {"morvaai box list", "morvaai box add company.box", "morvaai box verify"});
}

}  // namespace tool
