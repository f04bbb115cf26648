#include "host/native_path.h"
#include "host/utf8.h"

namespace morvabs {

std::optional<std::string> to_path(HString const& path) {
  std::wstring const text = path.get_ws();
  std::string bytes;
  bytes.reserve(text.size());
  for (wchar_t const c : text) {
    auto const value = static_cast<char32_t>(c);
    bool const is_surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value >= 0xDC80 && value <= 0xDCFF) {
      bytes.push_back(static_cast<char>(value - 0xDC00));
    } else if (value == 0 || is_surrogate || value > 0x10FFFF) {
      return std::nullopt;
    } else {
      char sequence[4];
      bytes.append(sequence, encode_utf8(value, sequence));
    }
  }
  return bytes;
}

HString from_path(std::string_view path) {
  std::wstring text;
  append_wide(text, path, InvalidByte::escaped);
  return {text.data(), static_cast<int>(text.size())};
}

}  // namespace morvabs
