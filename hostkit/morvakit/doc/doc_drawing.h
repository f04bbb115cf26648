#pragma once

#include <cstdint>

#include "host/Orlec/IFile.h"
#include "morvakit/doc/doc_header.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// Delivers the text that the drawings of a Word document hold outside its stories: that of word
/// art, and the names and descriptions that stand in for pictures. Returns the number of pictures.
std::int64_t read_drawings(Orlec::Reader const& tables, WordExtent extent, TextFlow& flow);

/// The same for a picture that stands in the text, with its head, in the stream of data.
void read_inline_picture(Orlec::Reader const& data, WordExtent extent, TextFlow& flow);

}  // namespace morvakit
