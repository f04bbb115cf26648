#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/HString.h"
#include "host/export.h"

namespace morvabs {

/// The bytes that a path stands for on disk: UTF-8, and for U+DC80 to U+DCFF the single byte behind
/// it. Nothing for a path that no file can have: one with a NUL, or with a value that is no Unicode
/// scalar value.
MORVA_EXPORT std::optional<std::string> to_path(HString const& path);

/// The text for a path found on disk, in the environment or among a program's arguments. A byte
/// that is no part of well-formed UTF-8 becomes U+DC80 to U+DCFF, so that `to_path` gives every
/// path back.
MORVA_EXPORT HString from_path(std::string_view path);

}  // namespace morvabs
