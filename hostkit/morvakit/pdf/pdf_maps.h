#pragma once

#include <string_view>

namespace morvakit {

/// Whether the library can take a map of characters, of a font's codes or to Unicode. It writes
/// down every code of a range, so that one line can ask for any amount of memory and time. Splits
/// the text as the library does.
bool is_character_map_sound(std::string_view map);

}  // namespace morvakit
