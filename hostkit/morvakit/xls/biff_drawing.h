#pragma once

#include <cstdint>

#include "morvakit/text_flow.h"
#include "morvakit/xls/biff_stream.h"

namespace morvakit {

/// Number of pictures that the drawings of a workbook refer to, from the record that they share.
std::int64_t count_drawing_pictures(BiffCursor& cursor);

/// Delivers what shapes say in their properties: the text of word art, the descriptions of
/// pictures.
void read_drawing_properties(BiffCursor& cursor, TextFlow& flow);

}  // namespace morvakit
