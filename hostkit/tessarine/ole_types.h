#pragma once

#include <string>
#include <string_view>

#include "host/export.h"

#include "tessarine/file_type.h"
#include "tessarine/ole_storage.h"

namespace tessarine {

/// Whether a file beginning with `head` is an OLE2 compound file.
bool is_ole(std::string_view head);

/// Tells the documents in OLE2 files apart by their streams, and whether they are encrypted. Where
/// the directory is lost, the beginning of the first stream decides.
Recognition recognize_ole(Orlec::Reader const& reader);

/// The same for a storage within such a file, which may be a document by itself. `name_suffix`
/// tells apart variants of a type: lower case, without the point.
MORVA_EXPORT Recognition recognize_ole_storage(OleStorage const& storage,
                                               std::string const& name_suffix);

/// Spreadsheets of the time before OLE2 are the bare record stream: whether `head` begins one.
bool is_bare_workbook(std::string_view head);

}  // namespace tessarine
