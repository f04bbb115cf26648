#pragma once

#include <cstdint>

#include "host/export.h"

namespace morvajieba {

/// What a character means to the segmenter, from tables that are made at build time: no locale and
/// no library is asked. Full-width forms have the class of their ASCII form.
enum class CharacterClass : std::uint8_t {
  other,   ///< blanks, punctuation, symbols, Han characters beyond the dictionary's range: alone
  mark,    ///< combining marks and the lengthening marks of kana: belong to the letter before them
  letter,  ///< letters and digits of other alphabets, Hangul included
  hiragana,
  katakana,
  joiner,  ///< the signs + # & . _ % - that may be part of a dictionary word
  ascii,   ///< a to z, A to Z, 0 to 9
  han,     ///< U+4E00 to U+9FD5, the range of the dictionary
};

inline constexpr std::uint32_t first_han = 0x4E00;
inline constexpr std::uint32_t han_count = 0x9FD5 - 0x4E00 + 1;

/// Tables of the generated source: for each 256 code points the number of their page, the pages,
/// and the simple lower-case mappings in ascending order.
struct LowerCase {
  std::uint32_t from;
  std::uint32_t to;
};
MORVA_EXPORT extern std::uint16_t const character_page_index[0x1100];
MORVA_EXPORT extern std::uint8_t const character_pages[][256];
extern LowerCase const lower_case_mappings[];
extern std::uint32_t const lower_case_count;

/// A character as its unsigned value; `wchar_t` is signed on some platforms.
inline std::uint32_t code_point(wchar_t character) {
  return static_cast<std::uint32_t>(character);
}

inline bool is_full_width(wchar_t character) {
  return code_point(character) - 0xFF01u <= 0xFF5Eu - 0xFF01u;
}

/// The ASCII form of a full-width form; any other character as it is.
inline wchar_t fold_width(wchar_t character) {
  return is_full_width(character) ? static_cast<wchar_t>(character - 0xFEE0) : character;
}

inline bool is_han(wchar_t character) {
  return code_point(character) - first_han < han_count;
}

/// Any 32-bit value may be asked for; what is no code point is `other`.
inline CharacterClass classify(wchar_t character) {
  std::uint32_t const code = code_point(character);
  if (code - first_han < han_count) return CharacterClass::han;
  if (code > 0x10FFFF) return CharacterClass::other;
  return static_cast<CharacterClass>(character_pages[character_page_index[code >> 8]][code & 0xFF]);
}

/// Whether a character makes a token a word: a letter (Han included) or a digit.
inline bool is_letter_or_digit(CharacterClass kind) {
  return kind >= CharacterClass::letter && kind != CharacterClass::joiner;
}

/// Simple lower-case form.
MORVA_EXPORT wchar_t to_lower(wchar_t character);

}  // namespace morvajieba
