#pragma once

#include <string_view>

#include "tessarine/file_type.h"

namespace tessarine {

/// Types that a few fixed bytes near the beginning tell: images, media, programs, archives other
/// than ZIP, databases, fonts. `unknown` when none fits. `head` is the beginning of the file, 4 KiB
/// or more where the file has as much.
Recognition recognize_signature(std::string_view head);

}  // namespace tessarine
