#pragma once

namespace tool {

/// Columns that a character takes on a terminal: 2 for wide and fullwidth ones (Unicode Standard
/// Annex 11), 0 for what is drawn onto the character before it or not at all, 1 for all others,
/// those of ambiguous width among them.
int character_width(char32_t c);

/// Whether the character is drawn as a pictogram, two columns wide, where U+FE0F stands behind it.
bool has_emoji_form(char32_t c);

}  // namespace tool
