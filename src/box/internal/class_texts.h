#pragma once

#include <cstddef>
#include <vector>

#include "box/HClusterResultBase.h"
#include "host/HString.h"
#include "numeric/HPointN.h"

namespace morva {

/// The words of a class by weight, as positions: the texts need few of them.
class ClassTexts {
 public:
  /// The weight of a word is its coordinate in the sum of the members' points over their number;
  /// without members the sum stays, and the line of `HPointN::operator/=` is logged.
  ClassTexts(std::vector<HString> const& words, HPointN sum, std::size_t members);

  /// As `HClusterResultMgr::get_class_desc` and `get_class_feature`.
  HString description() const;
  HString listing() const;

 private:
  std::vector<HString> const& words_;
  std::vector<double> weights_;
  std::vector<std::size_t> order_;
};

/// Fills the four texts of the record, as `HClusterResultMgr::get_cluster_base_result`.
void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                HPointN const& sum, std::size_t members);

}  // namespace morva
