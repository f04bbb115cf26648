#include "collect/HFileCollectMgr.h"

#include <ctime>

#include "dna/HFileDNA.h"
#include "features/HFeatureNode.h"
#include "features/HFileFeature.h"
#include "host/HAppUUID.h"
#include "host/HFile.h"
#include "host/HFileMD5.h"
#include "host/HStutterDict.h"
#include "host/internal/log_line.h"

namespace {

constexpr wchar_t const* tag = L"../HFileCollectMgr";

}  // namespace

HFileCollectMgr* HFileCollectMgr::pcollect = nullptr;

HFileCollectMgr::HFileCollectMgr() = default;
HFileCollectMgr::~HFileCollectMgr() = default;

HFileCollectMgr* HFileCollectMgr::pins() {
  if (pcollect == nullptr) {
    pcollect = new HFileCollectMgr;
  }
  if (!pcollect->mb_init) {
    pcollect->init();
  }
  return pcollect;
}

void HFileCollectMgr::init() {
  mstr_agent_id = HAppUUID::ins()->get();
  morva::log_line(3, tag, __LINE__, L"str_agent_id = ", mstr_agent_id);
  mb_init = mstr_agent_id.not_empty();
}

bool HFileCollectMgr::set_dict_path(HString const& directory) const {
  if (!HFile::IsFileExistDir(directory)) {
    return false;
  }
  HStutterDict::pins()->set_dict_path(directory);
  return true;
}

long long HFileCollectMgr::get_file_kb_size(HString const& path) const {
  return HFile::GetFileLen(path) / 1024 + 1;
}

HString HFileCollectMgr::get_agent_id() const {
  return mstr_agent_id;
}

HString HFileCollectMgr::get_file_md5(HString const& path) const {
  HString md5;
  HFileMD5::get_file_md5(path, md5);
  return md5;
}

bool HFileCollectMgr::get_file_base_info(HString const& path, HFileCollectBase* node) const {
  node->str_file = path;
  node->str_kb_size = HString(get_file_kb_size(path), false);
  node->str_agent_id = get_agent_id();
  node->t_collect = std::time(nullptr);
  return true;
}

bool HFileCollectMgr::get_file_feature(HString const& path, HFileCollectFeatureNode& node) const {
  if (!get_file_base_info(path, &node)) {
    return false;
  }
  HFeatureNode feature;
  if (HFileFeature::get_file_feature(path, feature, true)) {
    node.vt_words = feature.vt_words;
    node.vt_counts = feature.vt_counts;
    node.vt_weight = feature.vt_weight;
  }
  return false;
}

bool HFileCollectMgr::get_file_dna(HString const& path, HFileCollectDNANode& node) const {
  if (!get_file_base_info(path, &node)) {
    return false;
  }
  node.str_md5 = get_file_md5(path);
  HTessarineResult result;
  bool const done = HFileDNA::get_file_dna(path, node.str_dna, result, true);
  check_file_stat(node, result);
  return done;
}

void HFileCollectMgr::check_file_stat(HFileCollectDNANode& /*node*/,
                                      HTessarineResult const& /*result*/) const {}
