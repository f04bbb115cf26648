#pragma once

#include <string>

namespace morvabs {

/// A new random (version 4) UUID in lower case, 36 characters with hyphens.
std::string make_uuid();

/// The same without hyphens, 32 characters.
std::string make_short_uuid();

}  // namespace morvabs
