#include "morvakit/pdf/pdf_text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "host/utf8.h"

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

struct NamedCharacter {
  std::string_view reference;
  char character;
};

constexpr NamedCharacter named_characters[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

/// Adds the character that a reference in front of the markup stands for, else what stands there;
/// returns the length of that.
std::size_t append_reference(std::string_view markup, std::string& text) {
  for (auto const& named : named_characters) {
    if (markup.starts_with(named.reference)) {
      text += named.character;
      return named.reference.size();
    }
  }
  constexpr std::size_t longest = 12;
  bool const is_hexadecimal = markup.starts_with("&#x");
  auto const end = markup.substr(0, longest).find(';');
  if (!markup.starts_with("&#") || end == std::string_view::npos) {
    text += markup.front();
    return 1;
  }
  auto const digits = markup.substr(0, end).substr(is_hexadecimal ? 3 : 2);
  std::uint32_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value, is_hexadecimal ? 16 : 10);
  char bytes[4];
  text.append(bytes, morvabs::encode_utf8(std::max<std::uint32_t>(value, ' '), bytes));
  return end + 1;
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

std::string text_of_markup(std::string_view markup) {
  std::string text;
  while (!markup.empty()) {
    auto const end = markup.find_first_of("<&");
    text += markup.substr(0, end);
    markup.remove_prefix(std::min(end, markup.size()));
    if (markup.starts_with('<')) {
      bool const is_line_end = markup.starts_with("</p") || markup.starts_with("<br");
      text += is_line_end && !text.empty() ? "\n" : "";
      markup.remove_prefix(std::min(markup.find('>'), markup.size() - 1) + 1);
    } else if (!markup.empty()) {
      markup.remove_prefix(append_reference(markup, text));
    }
  }
  text.resize(text.find_last_not_of(" \r\n\t") + 1);
  return text;
}

}  // namespace morvakit
