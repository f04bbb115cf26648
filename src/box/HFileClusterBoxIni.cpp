#include "box/HFileClusterBoxIni.h"

#include <algorithm>

#include "box/HFileClusterBoxMgr.h"
#include "host/HFile.h"
#include "host/HFileMD5.h"
#include "host/HIniFileHelper.h"
#include "host/Orlec/LocateMgr.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HFileClusterBoxIni";
constexpr wchar_t const* md5_key = L"MD5";
constexpr wchar_t const* class_key = L"CLASS";
constexpr wchar_t const* class_separator = L"|";

/// Access to the index file.
class Index : public HIniFileHelper {
 public:
  Index() {
    mb_utf8 = true;
    setFile(HFileClusterBoxIni::mstr_box_ini);
  }
};

bool is_file(HString const& path) {
  bool const exists = HFile::IsFileExistFile(path);
  if (!exists) {
    morva::log_line(1, tag, __LINE__, L"not exist ", path);
  }
  return exists;
}

HClusterBoxLocalNode node_of(HIniSection const& section) {
  HClusterBoxLocalNode node;
  node.str_box_id = section.str_name;
  for (HIniKey const& key : section.vt_key) {
    if (key.str_key == md5_key) {
      node.str_box_md5 = key.str_value;
    } else if (key.str_key == class_key) {
      key.str_value.get_vt_str_by_sep(node.vt_class_id, class_separator);
    }
  }
  return node;
}

}  // namespace

HString HFileClusterBoxIni::mstr_box_ini =
    Orlec::LocateMgr::pins()->get_box_path(true) + L"box.ini";

HFileClusterBoxIni::HFileClusterBoxIni() = default;
HFileClusterBoxIni::~HFileClusterBoxIni() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a value.
void HFileClusterBoxIni::add_box_file(HString path) {
  is_file(path);
  QXPPolicyMorvaClustBox box;
  if (box.from_file(path) < 0) {
    morva::log_line(1, tag, __LINE__, path, L"from file fail.");
    return;
  }
  HClusterBoxLocalNode node;
  node.str_box_id = path.get_short_name_no_suffix();
  HFileMD5::get_file_md5(path, node.str_box_md5);
  HFileClusterBoxMgr::pins()->get_vt_class_id(box, node.vt_class_id);
  write_local_box_node(node);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a value.
void HFileClusterBoxIni::del_box_file(HString path) {
  is_file(path);
  delete_local_box_node(path.get_short_name_no_suffix());
}

void HFileClusterBoxIni::read_local_box_node(std::vector<HClusterBoxLocalNode>& vt_node) {
  vt_node.clear();
  if (!is_file(mstr_box_ini)) {
    return;
  }
  Index index;
  index.read_all();
  for (HIniSection const& section : index.vt_section) {
    vt_node.push_back(node_of(section));
  }
}

void HFileClusterBoxIni::read_local_box_node(HString const& box_id, HClusterBoxLocalNode& node) {
  if (!HFile::IsFileExistFile(mstr_box_ini)) {
    return;
  }
  Index const index;
  index.read_string(box_id, md5_key, node.str_box_md5);
  HString classes;
  index.read_string(box_id, class_key, classes);
  classes.get_vt_str_by_sep(node.vt_class_id, class_separator);
}

void HFileClusterBoxIni::write_local_box_node(HClusterBoxLocalNode const& node) {
  if (!HFile::IsFileExistFile(mstr_box_ini)) {
    HFile::touch(mstr_box_ini);
  }
  Index index;
  index.write_string(node.str_box_id, md5_key, node.str_box_md5);
  index.write_string(node.str_box_id, class_key, HString(node.vt_class_id));
}

void HFileClusterBoxIni::delete_local_box_node(HString const& box_id) {
  if (!HFile::IsFileExistFile(mstr_box_ini)) {
    return;
  }
  Index index;
  index.read_all();
  auto& sections = index.vt_section;
  auto const found =
      std::find_if(sections.begin(), sections.end(),
                   [&box_id](HIniSection const& section) { return section.str_name == box_id; });
  if (found != sections.end()) {
    sections.erase(found);
  }
  index.write_all();
}
