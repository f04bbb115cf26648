#pragma once

#include <cstdint>
#include <map>

#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace morva {

/// Which of all loads of boxes brought the box with this id into the cache of the box manager:
/// tells what was made of the cached box whether it may still be so. 0 for a box that was not
/// loaded.
std::uint64_t load_count(HString const& box_id);
/// Counts a load into that cache, which does not have the box yet. Boxes that have gone from it are
/// forgotten when there are more than it holds.
void count_load(HString const& box_id, std::map<HString, QXPPolicyMorvaClustBox> const& cache);

}  // namespace morva
