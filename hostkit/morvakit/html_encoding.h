#pragma once

#include "host/Orlec/IFile.h"
#include "morvabs/text_decoder.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The encoding of an HTML page: by mark, else what the page declares as long as its bytes agree,
/// else by detection.
morvabs::DetectedEncoding find_html_encoding(Orlec::Reader const& reader, ReadContext& context);

}  // namespace morvakit
