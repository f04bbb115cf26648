#pragma once

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Reads the members of a ZIP whose directory is missing or broken, by the headers in front of
/// them, as far as they go. Ends the context as `damaged`.
void read_zip_headers(Orlec::Reader const& reader, ReadContext& context);

}  // namespace morvakit
