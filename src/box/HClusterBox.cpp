#include "box/HClusterBox.h"

#include "host/HFile.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HClusterBox";
constexpr int kmeans_type = 0;
constexpr int dbscan_type = 1;

QXPKMeansNode kmeans_node(HClusterOut const& out) {
  QXPKMeansNode node;
  node.str_class_id = out.str_class_id;
  node.str_class_name = out.str_class_name;
  node.vt_weight = out.vt_center;
  node.d_radius = out.d_radius;
  node.vt_words.resize(out.vt_words.size());
  return node;
}

QXPDBScanNode dbscan_node(HClusterOut const& out) {
  QXPDBScanNode node;
  node.str_class_id = out.str_class_id;
  node.str_class_name = out.str_class_name;
  node.vt_file_node = out.vt_file_node;
  node.d_eps = out.d_eps;
  node.i_minpts = out.i_minpts;
  return node;
}

}  // namespace

HClusterBox* HClusterBox::pbox = nullptr;

HClusterBox::HClusterBox() = default;
HClusterBox::~HClusterBox() = default;

HClusterBox* HClusterBox::pins() {
  if (pbox == nullptr) {
    pbox = new HClusterBox;
  }
  if (pbox->mb_need_init) {
    pbox->map_box.clear();
  }
  return pbox;
}

void HClusterBox::set_need_init() {
  mb_need_init = true;
}

HString HClusterBox::get_box_path(bool const& with_sep) {
  HString const path(L"../data/ClusterBox");
  if (!HFile::IsFileExistDir(path)) {
    HFile::make_dir(path);
  }
  return with_sep ? path + L"/" : path;
}

void HClusterBox::get_box(HString const& box_id, QXPPolicyMorvaClustBox& box) {
  auto const cached = map_box.find(box_id);
  if (cached != map_box.end()) {
    box = cached->second;
    return;
  }
  box.from_file(box_file(box_id));
  map_box[box_id] = box;
}

void HClusterBox::to_box(int box_value, std::vector<HString> const& vt_words,
                         std::vector<HClusterOut> const& vt_out, HString const& box_id,
                         int cluster_type) {
  QXPPolicyMorvaClustBox box;
  box.i_box_value = box_value;
  box.vt_words = vt_words;
  box.i_cluster_type = cluster_type;
  for (HClusterOut const& out : vt_out) {
    if (cluster_type == kmeans_type) {
      box.vt_kmeans_node.push_back(kmeans_node(out));
    } else if (cluster_type == dbscan_type) {
      box.vt_dbscan_node.push_back(dbscan_node(out));
    }
  }
  int const result = box.to_file(box_file(box_id));
  morva::log_line(3, tag, __LINE__, L"box.to_file result : ", HString(result, false));
}

HString HClusterBox::box_file(HString const& box_id) {
  return get_box_path(true) + box_id + L".box";
}
