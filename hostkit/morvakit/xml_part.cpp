#include "morvakit/xml_part.h"

#include <string>

namespace morvakit {

bool parse_part(ZipContainer& container, ReadContext& context, std::string_view name,
                XmlHandler& handler, PartFault fault) {
  auto const index = container.find(name);
  if (!index) {
    return false;
  }
  XmlStream stream(handler, context);
  bool const complete =
      container.read(*index, [&](std::string_view bytes) { return stream.feed(bytes, false); });
  if (complete) {
    stream.feed({}, true);
  }
  if (fault == PartFault::damage && !stream.fault().empty()) {
    context.note(Orlec::ParseOutcome::damaged,
                 "the part " + std::string(name) + ", " + stream.fault());
  }
  return true;
}

}  // namespace morvakit
