#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// Text in which "%41" stands for "A", as in the addresses that parts name each other by.
std::string decode_percent(std::string_view text);

/// The part that the address `target` names, seen from the part `source`: from the top where it
/// begins with a slash. "." and ".." are resolved and never lead out of the package; what stands
/// behind "#" is no part of the name.
std::string resolve_part(std::string_view source, std::string_view target);

}  // namespace morvakit
