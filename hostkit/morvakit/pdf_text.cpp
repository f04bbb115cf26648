#include "morvakit/pdf_text.h"

#include <algorithm>
#include <cstddef>

namespace morvakit {

namespace {

constexpr std::size_t han_length = 3;

// U+4E00 to U+9FFF: three bytes, of which the first tells them from nearly all others.
bool is_han(std::string_view utf8) {
  return utf8.size() == han_length && utf8 >= "\xE4\xB8\x80" && utf8 <= "\xE9\xBF\xBF";
}

bool begins_with_han(std::string_view line) {
  return is_han(line.substr(0, han_length));
}

bool ends_with_han(std::string_view line) {
  return line.size() >= han_length && is_han(line.substr(line.size() - han_length));
}

std::size_t count_characters(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

bool goes_on(std::string_view line, std::string_view next) {
  return ends_with_han(line) && begins_with_han(next) &&
         count_characters(line) * 3 >= count_characters(next) * 2;
}

}  // namespace

std::string without_ligatures(std::string_view utf8) {
  constexpr std::string_view ligatures[] = {"ff", "fi", "fl", "ffi", "ffl", "st", "st"};
  std::string text;
  text.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    auto const last = i + 2 < utf8.size() ? static_cast<unsigned char>(utf8[i + 2]) : 0U;
    if (utf8.substr(i, 2) == "\xEF\xAC" && last >= 0x80 && last <= 0x86) {
      text += ligatures[last - 0x80];
      i += 2;
      continue;
    }
    auto const is_control =
        static_cast<unsigned char>(utf8[i]) < ' ' && utf8[i] != '\n' && utf8[i] != '\t';
    text += is_control ? ' ' : utf8[i];
  }
  return text;
}

std::string join_han_lines(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    std::size_t const end = utf8.find('\n');
    std::string_view const line = utf8.substr(0, end);
    text += line;
    if (end == std::string_view::npos) {
      break;
    }
    utf8.remove_prefix(end + 1);
    if (!goes_on(line, utf8.substr(0, utf8.find('\n')))) {
      text += '\n';
    }
  }
  return text;
}

}  // namespace morvakit
