#include "morvakit/formats.h"

// Stands in for the readers that are still being written, so that the library links meanwhile.
namespace morvakit {

namespace {

void refuse(ReadContext& context) {
  context.end(Orlec::ParseOutcome::not_supported, "there is no reader for this type");
}

}  // namespace

__attribute__((weak)) void read_plain_text(Orlec::Reader const& reader,
                                           tessarine::Recognition const&, ReadContext& context) {
  std::string text(static_cast<std::size_t>(reader.GetSize()), ' ');
  reader.ReadAt(0, text.data(), reader.GetSize());
  context.text(Orlec::ParseTextType_main, text);
}
#define PENDING(name)                                                                  \
  __attribute__((weak)) void name(Orlec::Reader const&, tessarine::Recognition const&, \
                                  ReadContext& c) {                                    \
    refuse(c);                                                                         \
  }
PENDING(read_xml)
PENDING(read_html)
PENDING(read_docx)
PENDING(read_xlsx)
PENDING(read_pptx)
PENDING(read_odf)
PENDING(read_pdf)
#undef PENDING

}  // namespace morvakit
