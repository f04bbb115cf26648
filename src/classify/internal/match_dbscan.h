#pragma once

#include <span>

#include "classify/internal/weight_lists.h"
#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace morva {

/// Asks about one class after the other what `HFileMatchClassifyDBScan::match` answers, up to the
/// first that the document belongs to; what does not depend on the class is done once. `members`
/// holds the members of all classes of the box; where it is null, those of each class are taken as
/// they are needed.
bool match_dbscan(HFeatureNode const& node, std::span<HString const> class_ids,
                  QXPPolicyMorvaClustBox const& box, WeightLists const* members, HString& str_out);

}  // namespace morva
