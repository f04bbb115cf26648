#include "suggest/trial_box.h"

#include <utility>

#include "classes/decision.h"

namespace tool {

namespace {

// Another one each time, so that nothing that was kept of an earlier box is taken for this one's.
HString next_id() {
  static int count = 0;
  return HString(L"trial-") + HString(++count, false);
}

}  // namespace

TrialBox::TrialBox(QXPPolicyMorvaClustBox content)
    : id_(next_id()), installed_(HFileClusterBoxMgr::pbox) {
  manager_.mb_init = true;
  HClusterBoxLocalNode& entry = manager_.vt_local_box.emplace_back();
  entry.str_box_id = id_;
  manager_.get_vt_class_id(content, entry.vt_class_id);
  manager_.map_box[id_] = std::move(content);
  HFileClusterBoxMgr::pbox = &manager_;
}

TrialBox::~TrialBox() {
  HFileClusterBoxMgr::pbox = installed_;
}

void TrialBox::set_neighbourhood(Neighbourhood const& neighbourhood) {
  for (QXPDBScanNode& node : manager_.map_box[id_].vt_dbscan_node) {
    node.d_eps = neighbourhood.eps;
    node.i_minpts = neighbourhood.minpts;
  }
}

std::optional<HString> TrialBox::class_of(HFeatureNode const& document) const {
  return class_that_takes(document, manager_.vt_local_box.front().vt_class_id, id_);
}

}  // namespace tool
