#include "c/internal/shown.h"

#include "host/utf8.h"

namespace morva::c {

namespace {

// Steers a terminal, or makes what follows look other than it is: ends the line, or has it read
// from the other side.
bool is_harmful(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

}  // namespace

std::string shown(HString const& text) {
  std::wstring wide = text.get_ws();
  for (wchar_t& c : wide) {
    if (is_harmful(static_cast<char32_t>(c))) {
      c = L'\xFFFD';
    }
  }
  return morvabs::to_utf8(wide);
}

}  // namespace morva::c
