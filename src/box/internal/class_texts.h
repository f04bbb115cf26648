#pragma once

#include <cstddef>
#include <vector>

#include "box/HClusterResultBase.h"
#include "box/internal/weight_order.h"
#include "host/HString.h"
#include "numeric/HPointN.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// The heaviest words of a class, as positions, in the order of their weights: the texts need few.
class ClassTexts {
 public:
  /// The weight of a word is its coordinate in the sum of the members' points over their number;
  /// without members the sum stays, and the line of `HPointN::operator/=` is logged.
  ClassTexts(std::vector<HString> const& words, HPointN sum, std::size_t members);
  /// The same of a sum with a coordinate for each word, most of which are 0: in time proportional
  /// to those that are not.
  ClassTexts(std::vector<HString> const& words, SparsePoint const& sum, std::size_t members);

  /// As `HClusterResultMgr::get_class_desc` and `get_class_feature`.
  HString description() const;
  HString listing() const;

 private:
  std::vector<HString> const& words_;
  std::vector<PlacedWeight> heaviest_;
};

/// Fills the four texts of the record, as `HClusterResultMgr::get_cluster_base_result`.
void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                HPointN const& sum, std::size_t members);
void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                SparsePoint const& sum, std::size_t members);

}  // namespace morva
