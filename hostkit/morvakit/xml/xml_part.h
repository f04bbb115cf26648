#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/archive/zip_container.h"
#include "morvakit/read_context.h"
#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// What a part that is no well-formed XML means.
enum class PartFault {
  damage,   ///< noted in the context
  ignored,  ///< kinds of part that are often ill-formed in good documents
};

/// Parses the part of that name, if the container has one, in one piece or, as packages that are
/// written while they are printed have them, in several. False when it has none.
bool parse_part(ZipContainer& container, ReadContext& context, std::string_view name,
                XmlHandler& handler, PartFault fault = PartFault::damage);
/// The place in the container of the part of that name, or of the first of its pieces.
std::optional<std::uint64_t> find_part(ZipContainer const& container, std::string_view name);

/// Parses a file that is one XML document. One that is not well-formed ends the context behind the
/// text that stands in front of the fault.
void parse_file(Orlec::Reader const& reader, ReadContext& context, XmlHandler& handler);

}  // namespace morvakit
