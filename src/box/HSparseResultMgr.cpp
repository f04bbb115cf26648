#include "box/HSparseResultMgr.h"

#include "box/internal/class_texts.h"
#include "numeric/internal/center_finder.h"
#include "numeric/internal/distance_table.h"
#include "numeric/internal/valid_members.h"

HSparseResultMgr::HSparseResultMgr() = default;
HSparseResultMgr::~HSparseResultMgr() = default;

bool HSparseResultMgr::get_cluster_base_result(HClusterResultBase* node, int const& index,
                                               std::vector<HString> const& vt_words,
                                               HSparsePoints const& points,
                                               std::vector<int> const& vt_member) {
  if (node == nullptr) {
    return false;
  }
  auto const table = points.table();
  // Over 1.0 the mean is the sum.
  morva::SparsePoint const sum =
      morva::CenterFinder().mean(static_cast<long long>(vt_words.size()),
                                 morva::valid_members(table->points(), vt_member), 1.0);
  morva::fill_texts(*node, index, vt_words, sum, vt_member.size());
  return true;
}
