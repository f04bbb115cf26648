#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/worker_pool.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "terminal/output.h"
#include "terminal/style.h"
#include "version_number.h"

namespace tool {

int run_version(bool json) {
  std::string const number = version_number();
  HString const dictionary = Orlec::LocateMgr::pins()->get_dict_path(false);
  HStutterDict::pins()->set_dict_path(dictionary);
  bool const found = HStutterDict::pins()->is_exist_dict();
  HString const boxes = Orlec::LocateMgr::pins()->get_box_path(false);
  if (json) {
    nlohmann::ordered_json object;
    object["version"] = number;
    object["dictionary"] = utf8(dictionary);
    object["dictionary_found"] = found;
    object["boxes"] = utf8(boxes);
    morvabs::IsolationLayers const layers = morvabs::isolation_layers();
    object["isolation"] = {{"system_calls", layers.system_calls},
                           {"landlock", layers.landlock},
                           {"memory", layers.memory}};
    return write_output(object.dump() + "\n") ? all_done : some_failed;
  }
  std::string const text =
      fmt::format("morvaai {}\ndictionary: {}{}\nboxes: {}\n", number, printable(dictionary),
                  found ? "" : styled(Role::warning, " (not found)"), printable(boxes));
  return show(text) ? all_done : some_failed;
}

}  // namespace tool
