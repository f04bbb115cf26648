#pragma once

#include <cstdint>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Reads the file in the data of an embedded object, which begin in an RTF document at `offset`,
/// just behind their control word, and go as far as their group. False when the outer reading is to
/// stop.
bool read_rtf_object(Orlec::Reader const& document, std::int64_t offset, ReadContext& context);

}  // namespace morvakit
