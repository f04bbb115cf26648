#include "morvakit/sheet/sheet_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "host/utf8.h"

namespace morvakit {

namespace {

constexpr bool is_pair(std::uint32_t high, std::uint32_t low) {
  return (high & 0xfc00U) == 0xd800U && (low & 0xfc00U) == 0xdc00U;
}

void append_character(std::string& utf8, char32_t character) {
  constexpr char32_t first_printable = 0x20;
  if (character < first_printable) {
    utf8 += character == '\t' ? '\t' : character == 0 ? ' ' : '\n';
    return;
  }
  std::array<char, 4> buffer{};
  utf8.append(buffer.data(), morvabs::encode_utf8(character, buffer.data()));
}

}  // namespace

std::string header_text(std::string_view code) {
  constexpr std::string_view digits = "0123456789";
  std::string result;
  std::size_t at = 0;
  while ((at = code.find('&')) != std::string_view::npos && at + 1 < code.size()) {
    result.append(code.substr(0, at));
    char const what = code[at + 1];
    code.remove_prefix(at + 2);
    if (what == '&') {
      result += '&';
    } else if (what == '"') {
      auto const closing = code.find('"');
      code.remove_prefix(closing == std::string_view::npos ? code.size() : closing + 1);
    } else if (digits.find(what) != std::string_view::npos) {
      code.remove_prefix(std::min(code.find_first_not_of(digits), code.size()));
    } else if (what == 'K') {
      code.remove_prefix(std::min<std::size_t>(6, code.size()));
    } else if ((what == 'L' || what == 'C' || what == 'R') && !result.empty()) {
      result += '\t';
    }
  }
  return result.append(code);
}

std::string_view error_text(int number) {
  switch (number) {
    case 0x00:
      return "#NULL!";
    case 0x07:
      return "#DIV/0!";
    case 0x0f:
      return "#VALUE!";
    case 0x17:
      return "#REF!";
    case 0x1d:
      return "#NAME?";
    case 0x24:
      return "#NUM!";
    case 0x2a:
      return "#N/A";
    case 0x2b:
      return "#GETTING_DATA";
    default:
      return {};
  }
}

void append_utf16(std::string& utf8, std::string_view bytes) {
  auto const unit = [bytes](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at]) |
                                      static_cast<unsigned char>(bytes[at + 1]) << 8);
  };
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    auto character = unit(at);
    if (at + 3 < bytes.size() && is_pair(character, unit(at + 2))) {
      character = 0x10000U + ((character & 0x3ffU) << 10U) + (unit(at + 2) & 0x3ffU);
      at += 2;
    }
    append_character(utf8, character);
  }
}

void append_low_bytes(std::string& utf8, std::string_view bytes) {
  auto const is_plain = [](char c) {
    auto const value = static_cast<unsigned char>(c);
    return (value >= 0x20 && value < 0x80) || c == '\t';
  };
  while (!bytes.empty()) {
    auto const plain = static_cast<std::size_t>(
        std::find_if_not(bytes.begin(), bytes.end(), is_plain) - bytes.begin());
    utf8.append(bytes.substr(0, plain));
    if (plain < bytes.size()) {
      append_character(utf8, static_cast<unsigned char>(bytes[plain]));
    }
    bytes.remove_prefix(std::min(plain + 1, bytes.size()));
  }
}

double unpack_number(std::uint32_t packed) {
  constexpr std::uint32_t flag_hundredths = 1;
  constexpr std::uint32_t flag_whole = 2;
  auto const value = (packed & flag_whole) != 0
                         ? static_cast<double>(static_cast<std::int32_t>(packed) >> 2)
                         : std::bit_cast<double>(static_cast<std::uint64_t>(packed & ~3U) << 32U);
  return (packed & flag_hundredths) != 0 ? value / 100 : value;
}

}  // namespace morvakit
