#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "boxes/box_store.h"
#include "boxes/box_text.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/progress.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

// An installed box as far as it can be read.
struct Installed {
  HString id;
  HString file;
  std::optional<HClusterBoxLocalNode> entry;
  QXPPolicyMorvaClustBox box;
  BoxStore::Problem unread;
};

Installed load(HString const& id) {
  Installed found;
  found.id = id;
  found.entry = BoxStore::entry(id);
  found.unread = BoxStore::refuse_name(id);
  if (!found.unread) {
    found.file = *BoxStore::file_of(id);
    found.unread = BoxStore::read(found.file, found.box);
  }
  return found;
}

std::size_t class_count(QXPPolicyMorvaClustBox const& box) {
  return box.vt_kmeans_node.size() + box.vt_dbscan_node.size();
}

bool write_json(Json const& object) {
  return write_output(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

Json json_error(std::string const& reason) {
  return {{"outcome", "failed"}, {"reason", reason}};
}

// What `learn` takes for its `--method`.
char const* method_of(QXPPolicyMorvaClustBox const& box) {
  switch (box.i_cluster_type) {
    case 0:
      return "kmeans";
    case 1:
      return "dbscan";
    default:
      return "unknown";
  }
}

Json summary(Installed const& found) {
  Json object = {{"id", utf8(found.id)}, {"file", utf8(found.file)}};
  if (found.unread) {
    object["error"] = json_error(*found.unread);
    return object;
  }
  object["bytes"] = HFile::GetFileLen(found.file);
  object["method"] = method_of(found.box);
  object["word_count"] = found.box.vt_words.size();
  object["class_count"] = class_count(found.box);
  return object;
}

std::string counted(std::size_t count, char const* one, char const* several) {
  return fmt::format("{} {}", count, count == 1 ? one : several);
}

// Puts the box into a table, or tells why that cannot be.
void add_summary(Installed const& found, Table& table) {
  if (found.unread) {
    complain(*found.unread);
    return;
  }
  table.add({{printable(found.id), Role::name},
             box_type_name(found.box.i_cluster_type),
             counted(class_count(found.box), "class", "classes"),
             counted(found.box.vt_words.size(), "word", "words"),
             fmt::format("{} bytes", HFile::GetFileLen(found.file))});
}

Json classes_of(QXPPolicyMorvaClustBox const& box) {
  Json classes = Json::array();
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    classes.push_back({{"id", utf8(node.str_class_id)},
                       {"name", utf8(node.str_class_name)},
                       {"radius", node.d_radius}});
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    classes.push_back({{"id", utf8(node.str_class_id)},
                       {"name", utf8(node.str_class_name)},
                       {"eps", node.d_eps},
                       {"minpts", node.i_minpts},
                       {"file_count", node.vt_file_node.size()}});
  }
  return classes;
}

// Whether a document can be compared with the classes: their lists must be as long as the
// vocabulary.
bool has_even_lists(QXPPolicyMorvaClustBox const& box) {
  auto const is_even = [&box](auto const& node) {
    return node.vt_weight.size() == box.vt_words.size();
  };
  return std::all_of(box.vt_kmeans_node.begin(), box.vt_kmeans_node.end(), is_even) &&
         std::all_of(box.vt_dbscan_node.begin(), box.vt_dbscan_node.end(), [&](auto const& node) {
           return std::all_of(node.vt_file_node.begin(), node.vt_file_node.end(), is_even);
         });
}

// What is wrong with a box, each a phrase.
std::vector<std::string> faults(Installed const& found) {
  std::vector<std::string> all;
  if (!found.entry) {
    all.emplace_back("the index does not have it");
  }
  if (found.unread) {
    all.push_back(*found.unread);
    return all;
  }
  HString md5;
  HFileMD5::get_file_md5(found.file, md5);
  if (found.entry && found.entry->str_box_md5.not_empty() && found.entry->str_box_md5 != md5) {
    all.emplace_back("the file is not the one that the index knows: its MD5 is another");
  }
  std::vector<HString> ids;
  HFileClusterBoxMgr::pins()->get_vt_class_id(found.box, ids);
  if (found.entry && found.entry->vt_class_id != ids) {
    all.emplace_back("its classes are not those that the index lists");
  }
  if (found.box.i_cluster_type != 0 && found.box.i_cluster_type != 1) {
    all.push_back("no document is found in a box of " + box_type_name(found.box.i_cluster_type));
  }
  if (!has_even_lists(found.box)) {
    all.emplace_back("not all weight lists are as long as the vocabulary");
  }
  return all;
}

// Whether the box is as it should be, and what was found could be told.
bool verify(HString const& id, bool json) {
  std::vector<std::string> found{"there is no such box"};
  if (BoxStore::has(id)) {
    found = faults(load(id));
  }
  if (json) {
    return write_json({{"id", utf8(id)}, {"problems", found}}) && found.empty();
  }
  for (std::string const& fault : found) {
    complain("box " + printable(id) + ": " + fault);
  }
  return found.empty() && show(printable(id) + ": " + styled(Role::good, "as it should be") + "\n");
}

std::vector<HString> all_ids() {
  std::vector<HString> ids;
  for (HClusterBoxLocalNode const& node : BoxStore::entries()) {
    ids.push_back(node.str_box_id);
  }
  return ids;
}

// Whether all of the ids could be those of boxes; tells of those that could not.
bool are_names(std::vector<HString> const& ids) {
  bool is_well = true;
  for (HString const& id : ids) {
    if (auto const refused = BoxStore::refuse_name(id)) {
      complain(*refused);
      is_well = false;
    }
  }
  return is_well;
}

// Tells why there is no result for a box.
int failed(std::string const& problem, HString const& id, bool json) {
  complain(problem);
  if (json) {
    write_json({{"id", utf8(id)}, {"error", json_error(problem)}});
  }
  return some_failed;
}

// Prints what a change of the boxes did.
int told(BoxStore::Problem const& problem, HString const& id, bool json, char const* done) {
  if (problem) {
    return failed(*problem, id, json);
  }
  bool const is_written =
      json ? write_json({{"id", utf8(id)}, {"done", done}})
           : show(fmt::format("{}: {}\n", styled(Role::name, printable(id)), done));
  return is_written ? all_done : some_failed;
}

}  // namespace

int run_box_list(bool json) {
  bool is_well = true;
  Table table({Align::left, Align::left, Align::right, Align::right, Align::right});
  std::vector<HString> const ids = all_ids();
  if (ids.empty() && !json && output_screen().is_terminal) {
    return show("there are no boxes yet: morvaai learn makes one, morvaai box add installs one\n")
               ? all_done
               : some_failed;
  }
  Progress const progress(ids.size(), "boxes");
  for (std::size_t i = 0; i < ids.size(); ++i) {
    Installed const found = load(ids[i]);
    progress.show(i + 1, ids[i]);
    is_well = !found.unread && is_well;
    if (json) {
      is_well = write_json(summary(found)) && is_well;
    } else {
      add_summary(found, table);
    }
  }
  return show(table.text()) && is_well ? all_done : some_failed;
}

int run_box_show(BoxOptions const& options) {
  HString const id = morvabs::from_path(options.ids.front());
  if (!are_names({id})) {
    return wrong_use;
  }
  if (!BoxStore::has(id)) {
    return failed(BoxStore::no_such_box(id), id, options.json);
  }
  Installed const found = load(id);
  if (found.unread) {
    return failed(*found.unread, id, options.json);
  }
  HString md5;
  HFileMD5::get_file_md5(found.file, md5);
  if (options.json) {
    Json object = summary(found);
    object["md5"] = utf8(md5);
    object["classes"] = classes_of(found.box);
    return write_json(object) ? all_done : some_failed;
  }
  bool const is_written =
      show(fmt::format("{}: {}, {} bytes, MD5 {}\n", styled(Role::name, printable(id)),
                       printable(found.file), HFile::GetFileLen(found.file), printable(md5))) &&
      write_box_text(found.box);
  return is_written ? all_done : some_failed;
}

int run_box_add(BoxAddOptions const& options) {
  HString const file = morvabs::from_path(options.file);
  HString const id = options.id ? morvabs::from_path(*options.id) : file.get_short_name_no_suffix();
  if (auto const refused = BoxStore::refuse_id(id)) {
    complain(*refused + (options.id ? "" : ": give another with --id"));
    return wrong_use;
  }
  return told(BoxStore::install(file, id, options.force), id, options.json, "added");
}

int run_box_remove(BoxOptions const& options) {
  HString const id = morvabs::from_path(options.ids.front());
  if (!are_names({id})) {
    return wrong_use;
  }
  return told(BoxStore::remove(id), id, options.json, "removed");
}

int run_box_verify(BoxOptions const& options) {
  std::vector<HString> ids;
  for (std::string const& id : options.ids) {
    ids.push_back(morvabs::from_path(id));
  }
  if (!are_names(ids)) {
    return wrong_use;
  }
  if (ids.empty()) {
    ids = all_ids();
    std::vector<HString> const unlisted = BoxStore::unlisted();
    ids.insert(ids.end(), unlisted.begin(), unlisted.end());
  }
  bool is_well = true;
  Progress const progress(ids.size(), "boxes");
  for (std::size_t i = 0; i < ids.size(); ++i) {
    is_well = verify(ids[i], options.json) && is_well;
    progress.show(i + 1, ids[i]);
  }
  return is_well ? all_done : some_failed;
}

}  // namespace tool
