// Build-time program: writes the character tables of the segmenter as a C++ source, from ICU's
// character properties, so that nothing asks ICU or a locale at run time.

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "morvajieba/characters.h"

namespace {

using morvajieba::CharacterClass;
using Page = std::array<std::uint8_t, 256>;

CharacterClass class_of_ascii(UChar32 code) {
  if ((code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
      (code >= 'a' && code <= 'z')) {
    return CharacterClass::ascii;
  }
  for (char const sign : {'+', '#', '&', '.', '_', '%', '-'}) {
    if (code == sign) return CharacterClass::joiner;
  }
  return CharacterClass::other;
}

/// Lengthening and voicing marks of kana, which Unicode counts as letters.
bool is_kana_mark(UChar32 code) {
  return code == 0x30FC || code == 0xFF70 || code == 0xFF9E || code == 0xFF9F;
}

CharacterClass class_of(UChar32 code) {
  if (code < 0x80) return class_of_ascii(code);
  if (code >= 0xFF01 && code <= 0xFF5E) return class_of_ascii(code - 0xFEE0);
  if (code - 0x4E00 >= 0 && code <= 0x9FD5) return CharacterClass::han;
  std::uint32_t const category = U_GET_GC_MASK(code);
  if ((category & U_GC_M_MASK) != 0 || is_kana_mark(code)) return CharacterClass::mark;
  if ((category & (U_GC_L_MASK | U_GC_ND_MASK)) == 0) return CharacterClass::other;
  UErrorCode status = U_ZERO_ERROR;
  switch (uscript_getScript(code, &status)) {
    case USCRIPT_HAN:
      return CharacterClass::other;
    case USCRIPT_HIRAGANA:
      return CharacterClass::hiragana;
    case USCRIPT_KATAKANA:
      return CharacterClass::katakana;
    default:
      return CharacterClass::letter;
  }
}

void write_pages(std::ostream& out) {
  std::map<Page, std::size_t> numbers;
  std::vector<Page> pages;
  out << "std::uint16_t const character_page_index[0x1100] = {";
  for (UChar32 first = 0; first < 0x110000; first += 256) {
    Page page{};
    for (UChar32 i = 0; i < 256; ++i) {
      page[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(class_of(first + i));
    }
    auto const [entry, is_new] = numbers.emplace(page, pages.size());
    if (is_new) pages.push_back(page);
    out << entry->second << ',';
  }
  out << "};\nstd::uint8_t const character_pages[][256] = {\n";
  for (Page const& page : pages) {
    out << '{';
    for (std::uint8_t const kind : page) out << static_cast<int>(kind) << ',';
    out << "},\n";
  }
  out << "};\n";
}

void write_lower_case(std::ostream& out) {
  std::uint32_t count = 0;
  out << "LowerCase const lower_case_mappings[] = {\n";
  for (UChar32 code = 0x80; code < 0x110000; ++code) {
    UChar32 const lower = u_tolower(code);
    if (lower == code) continue;
    out << '{' << code << ',' << lower << "},\n";
    ++count;
  }
  out << "};\nstd::uint32_t const lower_case_count = " << count << ";\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: generate_characters OUTPUT.cpp\n", stderr);
    return 2;
  }
  std::ofstream out(argv[1]);
  out << "#include \"morvajieba/characters.h\"\n\nnamespace morvajieba {\n\n";
  write_pages(out);
  write_lower_case(out);
  out << "\n}  // namespace morvajieba\n";
  out.close();
  if (!out) {
    std::fprintf(stderr, "cannot write %s\n", argv[1]);
    return 1;
  }
  return 0;
}
