#include "command_line.h"

namespace tool {

void add_box_commands(CLI::App& app, Commands& all) {
  CLI::App* const box = app.add_subcommand("box", "Cluster boxes")->require_subcommand(1);
  box->footer(
      "Examples:\n"
      "  morvaai box add company.box\n"
      "  morvaai box verify\n"
      "  morvaai box dump company.box --json");
  auto const add_json = [](CLI::App& command, bool& json) {
    command.add_flag("--json", json, "Print one JSON object a line for each box");
  };
  CLI::App* command = box->add_subcommand("list", "The boxes of this machine");
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = run_box_list(all.box.json); });

  command = box->add_subcommand("show", "A box of this machine, its classes and their words");
  command->add_option("ID", all.box.ids, "Name of the box")->required()->expected(1);
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = run_box_show(all.box); });

  command = box->add_subcommand("add", "Installs a box file");
  command->add_option("FILE", all.box_add.file, "A box file")->required();
  command->add_option("--id", all.box_add.id,
                      "Name of the box, without slashes and dots; that of the file if not given");
  command->add_flag("--force", all.box_add.force, "Replace a box of that name");
  add_json(*command, all.box_add.json);
  command->callback([&all] { all.status = run_box_add(all.box_add); });

  command = box->add_subcommand("remove", "Removes a box and its file");
  command->add_option("ID", all.box.ids, "Name of the box")->required()->expected(1);
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = run_box_remove(all.box); });

  command = box->add_subcommand("verify", "Compares boxes with the index of them");
  command->add_option("ID", all.box.ids, "Names of boxes; all that there are if not given");
  add_json(*command, all.box.json);
  command->callback([&all] { all.status = run_box_verify(all.box); });

  command = box->add_subcommand("dump", "What a box file holds");
  command->add_option("FILE", all.box_dump.file, "A box file")->required();
  command->add_flag("--json", all.box_dump.json, "Print one JSON object, which tells everything");
  command->callback([&all] { all.status = run_box_dump(all.box_dump); });
}

}  // namespace tool
