#pragma once

#include <cstdint>

#include "host/HString.h"
#include "host/export.h"

namespace morvabs {

/// The memory, in bytes, that a box may take once it is loaded; its numbers take 8 bytes each.
inline constexpr std::uint64_t largest_box_memory = std::uint64_t{1} << 30;

/// Copies a box file byte by byte, replacing `to` as `QXPPolicyMorvaClustBox::to_file` does, once
/// it is certain that `from_file` loads what is copied. 0, or with `to` untouched a negative error
/// number, that of `from_file` or what the system says for a file that cannot be written. Takes the
/// memory of the file and of the box once.
MORVA_EXPORT int copy_box_file(HString const& from, HString const& to);

}  // namespace morvabs
