#pragma once

#include <string_view>

#include "morvakit/ppt/ppt_records.h"

namespace morvakit {

/// Reads the file that an embedded object of a presentation is, unpacking it where it is packed.
/// `name` is for the reason only. False when the reading of the presentation is to stop.
bool read_embedded_object(PptStream& stream, PptRecord const& record, std::string_view name);

}  // namespace morvakit
