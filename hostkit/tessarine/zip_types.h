#pragma once

#include <string_view>

#include "tessarine/file_type.h"

namespace tessarine {

/// Whether a file beginning with `head` is a ZIP, whole or cut short.
bool is_zip(std::string_view head);

/// Tells the members of the ZIP family apart: Office Open XML by its content types and
/// relationships, OpenDocument and its predecessor by media type, and others by the entries that
/// they must have. `zip` when it is none of them.
Recognition recognize_zip(Orlec::Reader const& reader);

/// The Office Open XML type that a suffix stands for; `unknown` for others.
Recognition office_type_by_name(std::string_view suffix);

}  // namespace tessarine
