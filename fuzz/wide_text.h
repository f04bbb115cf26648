#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/HString.h"
#include "host/utf8.h"

namespace fuzz {

/// Any text at all out of bytes: UTF-8, in which the byte FF stands before four bytes of a
/// character of any value, and a byte that is part of nothing for a lone surrogate.
inline std::wstring wide_text(std::string_view bytes) {
  constexpr char escape = '\xFF';
  constexpr std::size_t value_size = 4;
  std::wstring text;
  while (!bytes.empty()) {
    std::size_t const plain = std::min(bytes.find(escape), bytes.size());
    morvabs::append_wide(text, bytes.substr(0, plain), morvabs::InvalidByte::escaped);
    bytes.remove_prefix(std::min(plain + 1, bytes.size()));
    if (bytes.size() < value_size) {
      continue;
    }
    std::uint32_t value = 0;
    for (char const byte : bytes.substr(0, value_size)) {
      value = value << 8U | static_cast<unsigned char>(byte);
    }
    text.push_back(static_cast<wchar_t>(value));
    bytes.remove_prefix(value_size);
  }
  return text;
}

inline HString string_of(std::wstring_view text) {
  return {text.data(), static_cast<int>(text.size())};
}

inline HString any_string(std::string_view bytes) {
  return string_of(wide_text(bytes));
}

}  // namespace fuzz
