#pragma once

#include <cstdint>

#include "host/HString.h"

namespace morva {

/// How often the box with this id has been read from its file into the cache of the box manager:
/// tells what was made of the cached box whether it may still be so.
std::uint64_t load_count(HString const& box_id);
void count_load(HString const& box_id);

}  // namespace morva
