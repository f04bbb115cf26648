#include "c/internal/shown.h"

#include "host/utf8.h"

namespace morva::c {

std::string shown(HString const& text) {
  std::wstring wide = text.get_ws();
  for (wchar_t& c : wide) {
    auto const code = static_cast<char32_t>(c);
    if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
      c = L'\xFFFD';
    }
  }
  return morvabs::to_utf8(wide);
}

}  // namespace morva::c
