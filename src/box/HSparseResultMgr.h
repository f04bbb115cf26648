#pragma once

#include <vector>

#include "box/HClusterResultBase.h"
#include "host/HString.h"
#include "host/export.h"
#include "numeric/HSparsePoints.h"

/// Turns the member lists of a clustering run into readable class records, on points of which only
/// the coordinates that are not zero are kept. The counterpart of `HClusterResultMgr`: every text
/// is its, every log line the same.
class MORVA_EXPORT HSparseResultMgr {
 public:
  HSparseResultMgr();
  ~HSparseResultMgr();

  /// As `HClusterResultMgr::get_cluster_base_result`. Takes the memory of one weight for each word.
  static bool get_cluster_base_result(HClusterResultBase* node, int const& index,
                                      std::vector<HString> const& vt_words,
                                      HSparsePoints const& points,
                                      std::vector<int> const& vt_member);
};
