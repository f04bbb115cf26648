#pragma once

#include <string_view>

#include "tessarine/file_type.h"

namespace tessarine {

/// Whether a file beginning with `head` is an OLE2 compound file.
bool is_ole(std::string_view head);

/// Tells the documents in OLE2 files apart by their streams, and whether they are encrypted. Where
/// the directory is lost, the beginning of the first stream decides.
Recognition recognize_ole(Orlec::Reader const& reader);

/// Spreadsheets of the time before OLE2 are the bare record stream: whether `head` begins one.
bool is_bare_workbook(std::string_view head);

}  // namespace tessarine
