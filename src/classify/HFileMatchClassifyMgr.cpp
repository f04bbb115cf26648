#include "classify/HFileMatchClassifyMgr.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>

#include "box/HFileClusterBoxMgr.h"
#include "classify/internal/match_dbscan.h"
#include "classify/internal/match_kmeans.h"
#include "classify/internal/prepared_boxes.h"
#include "classify/internal/vocabulary.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HFileMatchClassifyMgr";

/// Classes by box.
using Groups = std::map<HString, std::vector<HString>>;

// Those of the ids for which `HFileClusterBoxMgr::is_in_box` is true, by one walk over the index.
std::vector<HString> classes_in_box(std::vector<HString> const& class_ids, HString const& box_id) {
  // Without a class to look for, the index is not read.
  if (class_ids.empty()) {
    return {};
  }
  morva::Vocabulary const wanted(class_ids);
  std::vector<char> is_listed(wanted.positions().size());
  for (HClusterBoxLocalNode const& entry : HFileClusterBoxMgr::pins()->vt_local_box) {
    if (!(entry.str_box_id == box_id)) {
      continue;
    }
    for (HString const& id : entry.vt_class_id) {
      auto const place = wanted.place_of(id, 0);
      if (place.is_word) {
        is_listed[place.rank] = 1;
      }
    }
  }
  std::vector<HString> kept;
  std::copy_if(class_ids.begin(), class_ids.end(), std::back_inserter(kept),
               [&](HString const& id) { return is_listed[wanted.place_of(id, 0).rank] != 0; });
  return kept;
}

bool match_any(HFileMatchClassifyMgr const& manager, HFeatureNode const& node, Groups const& groups,
               HString& str_out) {
  return std::any_of(groups.begin(), groups.end(), [&](auto const& group) {
    return manager.match(node, group.second, group.first, str_out);
  });
}

}  // namespace

HFileMatchClassifyMgr* HFileMatchClassifyMgr::pmgr = nullptr;

HFileMatchClassifyMgr::HFileMatchClassifyMgr() = default;
HFileMatchClassifyMgr::~HFileMatchClassifyMgr() = default;

HFileMatchClassifyMgr* HFileMatchClassifyMgr::pins() {
  if (pmgr == nullptr) {
    pmgr = new HFileMatchClassifyMgr;
  }
  return pmgr;
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
                                  HString const& str_box_id, HString& str_out) const {
  std::vector<HString> const class_ids = classes_in_box(vt_class_id, str_box_id);
  if (class_ids.empty()) {
    return false;
  }
  QXPPolicyMorvaClustBox const* const box = HFileClusterBoxMgr::pins()->find_box(str_box_id);
  if (box == nullptr || (box->i_cluster_type != 0 && box->i_cluster_type != 1)) {
    return false;
  }
  morva::WeightLists const& lists = morva::prepared_box(str_box_id, *box);
  if (std::none_of(node.vt_words.begin(), node.vt_words.end(),
                   [&lists](HString const& word) { return lists.vocabulary().contains(word); })) {
    return false;
  }
  auto const match_box = box->i_cluster_type == 0 ? morva::match_kmeans : morva::match_dbscan;
  return match_box(node, class_ids, *box, &lists, str_out);
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
                                  HString& str_out) const {
  Groups groups;
  for (HString const& class_id : vt_class_id) {
    HString const box_id = HFileClusterBoxMgr::pins()->get_box_id_by_class_id(class_id);
    if (box_id.empty()) {
      morva::log_line(1, tag, __LINE__, class_id, L" not find box id.");
      continue;
    }
    groups[box_id].push_back(class_id);
  }
  return match_any(*this, node, groups, str_out);
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, HString const& str_class_id,
                                  HString const& str_box_id, HString& str_out) const {
  return HFileClusterBoxMgr::pins()->is_in_box(str_class_id, str_box_id) &&
         match(node, std::vector<HString>{str_class_id}, str_box_id, str_out);
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, HString const& str_class_id,
                                  HString& str_out) const {
  HString const box_id = HFileClusterBoxMgr::pins()->get_box_id_by_class_id(str_class_id);
  return box_id.not_empty() && match(node, str_class_id, box_id, str_out);
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, HString const& str_class_id,
                                  std::vector<HString> const& vt_box_id, HString& str_out) const {
  return std::any_of(vt_box_id.begin(), vt_box_id.end(), [&](HString const& box_id) {
    return HFileClusterBoxMgr::pins()->is_in_box(str_class_id, box_id) &&
           match(node, str_class_id, box_id, str_out);
  });
}

bool HFileMatchClassifyMgr::match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
                                  std::vector<HString> const& vt_box_id, HString& str_out) const {
  Groups groups;
  std::size_t const count = std::min(vt_box_id.size(), vt_class_id.size());
  for (std::size_t b = 0; b < count; ++b) {
    for (HString const& class_id : vt_class_id) {
      if (HFileClusterBoxMgr::pins()->is_in_box(class_id, vt_box_id[b])) {
        groups[vt_box_id[b]].push_back(vt_class_id[b]);
      }
    }
  }
  return match_any(*this, node, groups, str_out);
}
