#include "terminal/character_width.h"

#include <unicode/uchar.h>

namespace tool {

namespace {

// A character that joins the Hangul syllable begun before it.
bool continues_syllable(UChar32 c) {
  int const type = u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE);
  return type == U_HST_VOWEL_JAMO || type == U_HST_TRAILING_JAMO;
}

bool is_invisible(UChar32 c) {
  constexpr UChar32 soft_hyphen = 0xAD;
  constexpr UChar32 first_noncharacter = 0xFDD0;
  constexpr UChar32 last_noncharacter = 0xFDEF;
  if (c >= first_noncharacter && c <= last_noncharacter) {
    return true;
  }
  switch (u_charType(c)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
      return true;
    case U_FORMAT_CHAR:
      return c != soft_hyphen && u_hasBinaryProperty(c, UCHAR_PREPENDED_CONCATENATION_MARK) == 0;
    default:
      return continues_syllable(c);
  }
}

}  // namespace

int character_width(char32_t c) {
  auto const code = static_cast<UChar32>(c);
  if (c < 0x7F) {
    return 1;
  }
  if (is_invisible(code)) {
    return 0;
  }
  int const width = u_getIntPropertyValue(code, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

bool has_emoji_form(char32_t c) {
  return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_EMOJI) != 0;
}

}  // namespace tool
