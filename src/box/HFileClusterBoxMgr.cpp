#include "box/HFileClusterBoxMgr.h"

#include <algorithm>
#include <utility>

#include "box/HFileClusterBoxIni.h"
#include "box/internal/load_count.h"
#include "host/HFile.h"
#include "host/Orlec/LocateMgr.h"
#include "host/QXPPolicyMorvaClustBoxStateNode.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HFileClusterBoxMgr";

/// What is to be done with a box, by the numbers of its state record.
enum State { state_add = 1, state_remove = 2, state_replace = 3 };

bool exists(HString const& path) {
  bool const found = HFile::IsFileExist(path);
  if (!found) {
    morva::log_line(1, tag, __LINE__, path, L" not exist.");
  }
  return found;
}

bool holds(HClusterBoxLocalNode const& node, HString const& class_id) {
  auto const& ids = node.vt_class_id;
  return std::find(ids.begin(), ids.end(), class_id) != ids.end();
}

template <typename Class>
void append_ids(std::vector<Class> const& classes, std::vector<HString>& ids) {
  for (Class const& each : classes) {
    ids.push_back(each.str_class_id);
  }
}

}  // namespace

HFileClusterBoxMgr* HFileClusterBoxMgr::pbox = nullptr;

HFileClusterBoxMgr::HFileClusterBoxMgr()
    : str_box_path(Orlec::LocateMgr::pins()->get_box_path(true)) {}

HFileClusterBoxMgr::~HFileClusterBoxMgr() = default;

HFileClusterBoxMgr* HFileClusterBoxMgr::pins() {
  if (pbox == nullptr) {
    pbox = new HFileClusterBoxMgr;
  }
  if (!pbox->mb_init) {
    pbox->init();
  }
  return pbox;
}

bool HFileClusterBoxMgr::init() {
  if (!mb_init) {
    mb_init = true;
    HFileClusterBoxIni::read_local_box_node(vt_local_box);
  }
  return true;
}

bool HFileClusterBoxMgr::download(bool b_update) {
  if (b_update) {
    download_box();
    HFileClusterBoxIni::read_local_box_node(vt_local_box);
  }
  return true;
}

bool HFileClusterBoxMgr::download_box() const {
  return false;
}

void HFileClusterBoxMgr::update_box_ini() {
  HFileClusterBoxIni::read_local_box_node(vt_local_box);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a value.
void HFileClusterBoxMgr::read_box_to_ini(HString path) {
  QXPPolicyMorvaClustBoxStateNode const state;
  state.p_box->from_file(path);
  HClusterBoxLocalNode node;
  node.str_box_id = state.str_box_id;
  node.str_box_md5 = state.str_box_md5;
  get_vt_class_id(*state.p_box, node.vt_class_id);
  if (state.i_state == state_remove || state.i_state == state_replace) {
    HFileClusterBoxIni::delete_local_box_node(node.str_box_id);
  }
  if (state.i_state == state_add || state.i_state == state_replace) {
    HFileClusterBoxIni::write_local_box_node(node);
  }
  HFileClusterBoxIni::read_local_box_node(vt_local_box);
}

void HFileClusterBoxMgr::get_local_box(std::vector<HClusterBoxLocalNode>& vt_node) const {
  vt_node = vt_local_box;
}

void HFileClusterBoxMgr::get_vt_class_id(QXPPolicyMorvaClustBox const& box,
                                         std::vector<HString>& vt_class_id) const {
  if (box.i_cluster_type == 0) {
    append_ids(box.vt_kmeans_node, vt_class_id);
  } else if (box.i_cluster_type == 1) {
    append_ids(box.vt_dbscan_node, vt_class_id);
  }
}

bool HFileClusterBoxMgr::is_in_box(HString const& class_id, HString const& box_id) const {
  return std::any_of(vt_local_box.begin(), vt_local_box.end(),
                     [&](HClusterBoxLocalNode const& node) {
                       return node.str_box_id == box_id && holds(node, class_id);
                     });
}

HString HFileClusterBoxMgr::get_box_id_by_class_id(HString const& class_id) const {
  auto const last =
      std::find_if(vt_local_box.rbegin(), vt_local_box.rend(),
                   [&](HClusterBoxLocalNode const& node) { return holds(node, class_id); });
  return last == vt_local_box.rend() ? HString() : last->str_box_id;
}

HString HFileClusterBoxMgr::get_box_path(bool const& with_sep) const {
  return with_sep ? str_box_path + L"/" : str_box_path;
}

bool HFileClusterBoxMgr::get_box(HString const& box_id, QXPPolicyMorvaClustBox& box) {
  auto const cached = map_box.find(box_id);
  if (cached != map_box.end()) {
    box = cached->second;
    return true;
  }
  HString const path = box_file(box_id);
  if (!exists(path)) {
    return false;
  }
  box.from_file(path);
  morva::count_load(box_id, map_box);
  map_box[box_id] = box;
  return true;
}

QXPPolicyMorvaClustBox const* HFileClusterBoxMgr::find_box(HString const& box_id) {
  auto const cached = map_box.find(box_id);
  if (cached != map_box.end()) {
    return &cached->second;
  }
  HString const path = box_file(box_id);
  if (!exists(path)) {
    return nullptr;
  }
  QXPPolicyMorvaClustBox loaded;
  loaded.from_file(path);
  morva::count_load(box_id, map_box);
  return &map_box.emplace(box_id, std::move(loaded)).first->second;
}

HString HFileClusterBoxMgr::box_file(HString const& box_id) const {
  return get_box_path(true) + box_id + L".box";
}
