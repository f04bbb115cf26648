#pragma once

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Reads the files of a 7z archive: those that are stored or packed by LZMA and LZMA2, with or
/// without a filter for programs. Files that are packed otherwise are noted.
void read_seven_zip(Orlec::Reader const& reader, ReadContext& context);

}  // namespace morvakit
