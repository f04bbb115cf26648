#pragma once

#include <string_view>

#include "morvakit/read_context.h"
#include "morvakit/xml_stream.h"
#include "morvakit/zip_container.h"

namespace morvakit {

/// What a part that is no well-formed XML means.
enum class PartFault {
  damage,   ///< noted in the context
  ignored,  ///< kinds of part that are often ill-formed in good documents
};

/// Parses the part of that name, if the container has one. False when it has none.
bool parse_part(ZipContainer& container, ReadContext& context, std::string_view name,
                XmlHandler& handler, PartFault fault = PartFault::damage);

}  // namespace morvakit
