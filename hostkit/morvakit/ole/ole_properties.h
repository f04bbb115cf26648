#pragma once

#include <cstdint>

#include "morvakit/text_flow.h"

#include "tessarine/ole_storage.h"

namespace morvakit {

/// Delivers what an OLE2 document states of itself in its streams of properties, those that its
/// users added included: "name: value" a line, under the names that Office Open XML has for them.
/// Damage is noted as what makes the text incomplete, and ends nothing; of one property over 1 MiB
/// the beginning is delivered. Returns the number of pages that the document states, 0 where
/// it states none, for `ReadContext::count_pages` where the format has nothing better.
std::int64_t read_ole_properties(tessarine::OleStorage const& storage, TextFlow& flow);

}  // namespace morvakit
