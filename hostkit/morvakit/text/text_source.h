#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvabs/text_decoder.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The part of a text that tells its encoding: its first MiB, or the first one behind it with a
/// byte beyond ASCII; the mark in front of the text always counts.
morvabs::DetectedEncoding detect_text_encoding(Orlec::Reader const& reader, ReadContext& context);

/// Takes one piece of text in whole UTF-8 sequences, `last` with the final one, which may be empty;
/// false to have no more of it.
using TextConsumer = std::function<bool(std::string_view utf8, bool last)>;

/// Reads a text of a given encoding in pieces. NULs come as blanks. A failure to read ends the
/// context.
void read_decoded(Orlec::Reader const& reader, ReadContext& context,
                  morvabs::DetectedEncoding const& encoding, TextConsumer const& consumer);

}  // namespace morvakit
