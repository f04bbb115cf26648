#pragma once

#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvabs/text_decoder.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The encoding of an HTML page: by mark, else what `declared` says or, where that is empty or the
/// page's bytes do not agree with it, what the page declares as long as its bytes agree, else by
/// detection.
morvabs::DetectedEncoding find_html_encoding(Orlec::Reader const& reader, ReadContext& context,
                                             std::string_view declared = {});

/// Whether the bytes can be text of that encoding: few of them are malformed in it. False for a
/// name that is not known.
bool agrees_with_encoding(std::string_view sample, std::string const& encoding);

/// Reads a page that is part of another document, which may declare its encoding.
void read_html_part(Orlec::Reader const& reader, std::string_view declared_encoding,
                    ReadContext& context);

}  // namespace morvakit
