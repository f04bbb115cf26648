#pragma once

#include <cstdint>

#include "host/Orlec/IFile.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// Delivers what a form field of a Word document shows and holds beside its result: the default
/// text, the texts of help and of the status line, the items of a list.
void read_form_field(Orlec::Reader const& data, std::int64_t offset, TextFlow& flow);

}  // namespace morvakit
