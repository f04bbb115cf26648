#pragma once

#include "morvakit/read_context.h"
#include "morvakit/rtf/rtf_tokens.h"

namespace morvakit {

/// Reads the file in the data of an embedded object: the tokens behind the data's control word, as
/// far as their group goes. False when the outer reading is to stop.
bool read_rtf_object(RtfTokens& tokens, ReadContext& context);

}  // namespace morvakit
