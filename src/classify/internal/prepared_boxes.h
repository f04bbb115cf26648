#pragma once

#include "classify/internal/weight_lists.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace morva {

/// The words and weight lists of a box of the box manager's cache, by its type, prepared at the
/// first use. Prepared anew when the box has been read from its file since, or is seen to be
/// another (`WeightLists::is_of`). Good until the next call. What was made of boxes that are no
/// longer in the cache goes when otherwise more would be kept than the cache has.
WeightLists const& prepared_box(HString const& box_id, QXPPolicyMorvaClustBox const& box);

}  // namespace morva
