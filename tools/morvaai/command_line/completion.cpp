#include <optional>
#include <string>
#include <vector>

#include "boxes/box_store.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace tool {

namespace {

// A name that would not stay in its line, or steer the terminal, is left out.
void add_line(std::string& lines, HString const& name) {
  std::string const line = printable(name);
  if (!line.empty() && line == utf8(name)) {
    lines += line + "\n";
  }
}

std::string class_names(HString const& box_id) {
  std::string lines;
  auto const file = BoxStore::file_of(box_id);
  QXPPolicyMorvaClustBox box;
  if (BoxStore::refuse_name(box_id) || !file || BoxStore::read(*file, box)) {
    return lines;
  }
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    add_line(lines, node.str_class_name);
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    add_line(lines, node.str_class_name);
  }
  return lines;
}

}  // namespace

int run_complete(std::vector<std::string> const& what) {
  bool const is_of_classes = what.front() == "classes";
  std::vector<HString> boxes;
  for (std::size_t i = 1; i < what.size(); ++i) {
    boxes.push_back(morvabs::from_path(what[i]));
  }
  if (boxes.empty()) {
    for (HClusterBoxLocalNode const& entry : BoxStore::entries()) {
      boxes.push_back(entry.str_box_id);
    }
  }
  std::string lines;
  for (HString const& box : boxes) {
    if (is_of_classes) {
      lines += class_names(box);
    } else {
      add_line(lines, box);
    }
  }
  return write_output(lines) ? all_done : some_failed;
}

}  // namespace tool
