#pragma once

#include <span>

#include "classify/internal/weight_lists.h"
#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace morva {

/// Asks about one class after the other what `HFileMatchClassifyKMeans::match` answers, up to the
/// first that the document belongs to; what does not depend on the class is done once. `centers`
/// holds all centers of the box; where it is null, that is made when it is needed.
bool match_kmeans(HFeatureNode const& node, std::span<HString const> class_ids,
                  QXPPolicyMorvaClustBox const& box, WeightLists const* centers, HString& str_out);

}  // namespace morva
