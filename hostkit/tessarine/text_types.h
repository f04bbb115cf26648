#pragma once

#include <string>
#include <string_view>

#include "tessarine/file_type.h"

namespace tessarine {

/// Tells kinds of text apart: HTML and XML by their content, CSV, Markdown and source code by the
/// file's name as long as the content does not say otherwise. `utf8` is the beginning of the text.
Recognition recognize_text(std::string_view utf8, std::string const& name_suffix);

}  // namespace tessarine
