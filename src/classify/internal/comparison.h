#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "classify/internal/weight_lists.h"
#include "features/HFeatureNode.h"
#include "numeric/internal/distance_table.h"

namespace morva {

/// The distances between one document and the lists of a box, bit for bit those of dense points
/// over the sorted words of both. A question is answered once and its answer kept.
class Comparison {
 public:
  /// Refers to the lists.
  Comparison(HFeatureNode const& node, WeightLists const& lists);

  /// The first of the nearest lists; none where all are as far as points of unequal size.
  std::optional<DistanceTable::Found> closest();
  /// For each list 1 where its distance is below the limit, else 0.
  std::vector<char> const& within(double limit);

 private:
  DistanceTable const& lists_;
  SparsePoint document_;
  std::optional<std::optional<DistanceTable::Found>> closest_;
  // By the bits of the limit, which may be NaN.
  std::map<std::uint64_t, std::vector<char>> within_;
};

}  // namespace morva
