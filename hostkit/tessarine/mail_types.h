#pragma once

#include <string>
#include <string_view>

#include "tessarine/file_type.h"

namespace tessarine {

/// Tells messages, mailboxes and web archives by the header block they begin with; `unknown` for
/// other bytes. `head` is the raw beginning of the file; bytes above 0x7F may stand anywhere in it.
Recognition recognize_mail(std::string_view head, std::string const& name_suffix);

}  // namespace tessarine
