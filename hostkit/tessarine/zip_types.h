#pragma once

#include "tessarine/file_type.h"

namespace tessarine {

/// Whether a file beginning with `head` is a ZIP, whole or cut short.
bool is_zip(std::string_view head);

/// Tells the members of the ZIP family apart: Office Open XML by its content types and
/// relationships, OpenDocument and its predecessor by media type, and others by the entries that
/// they must have. `zip` when it is none of them.
Recognition recognize_zip(Orlec::Reader const& reader);

}  // namespace tessarine
