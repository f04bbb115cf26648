#pragma once

#include <functional>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

#include "tessarine/file_type.h"
#include "tessarine/ole_storage.h"

namespace morvakit {

/// Reads a document of a known type, the outermost or an embedded one, as far as the bounds and its
/// encryption allow. What goes wrong, ends the context or is noted in it; nothing is thrown but for
/// want of memory.
void read_document(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
                   ReadContext& context);

/// Reads a file that is embedded in, attached to or packed into the one that the context belongs
/// to. Call it where all of that file's own text has been delivered: what is found follows it, kind
/// by kind, on a new line. The type is told by the content; the reader's path, where it has one, is
/// the name that the file has in its container. The file is counted; one of a type that has no text
/// to be read is passed over. A fault of it leaves the outer document's reading as it is and is
/// noted there as `incomplete` (`limit_reached` for a bound), with the name in front of the reason.
/// False when the outer reading is to stop.
bool read_embedded(Orlec::Reader const& file, ReadContext& context);

/// The same for a document that is embedded as an OLE2 storage rather than as a file, such as a
/// workbook in a text; `name` is for the reason only.
bool read_embedded(tessarine::OleStorage const& storage, std::string_view name,
                   ReadContext& context);

/// The same for a document that is no file of its own, such as one whose parts stand among those of
/// the package that it is embedded in: `read` delivers its text to the context that it is given.
bool read_embedded(std::string_view name, ReadContext& context,
                   std::function<void(ReadContext&)> const& read);

}  // namespace morvakit
