#include "morvabs/ini_text.h"

#include <array>
#include <charconv>
#include <cstdint>

#include <SimpleIni.h>

#include "host/utf8.h"

namespace morvabs {

namespace {

using Parser = CSimpleIniCaseA;

/// A section behind everything else, which takes the comment at the end of the text. No encoded
/// name holds a control character.
constexpr std::string_view end_section = "\x01";
constexpr std::wstring_view empty_name = L"%{}";

/// What else is encoded in each place, beside control characters and blanks at the ends.
struct Place {
  std::wstring_view special;        ///< wherever it stands
  std::wstring_view special_first;  ///< as the first character
};

constexpr Place in_section_name = {L"]", L""};
constexpr Place in_key = {L"=", L"[;#\xFEFF"};
constexpr Place in_value = {L"", L""};

constexpr std::wstring_view hex_digits = L"0123456789ABCDEFabcdef";

bool is_hex_digit(wchar_t c) {
  return hex_digits.find(c) != std::wstring_view::npos;
}

bool starts_escape(std::wstring_view text) {
  bool const is_hex = text.size() >= 3 && is_hex_digit(text[1]) && is_hex_digit(text[2]);
  return text.size() >= 2 && text[0] == L'%' && (is_hex || text[1] == L'{');
}

bool is_scalar(char32_t value) {
  return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

bool needs_escape(std::wstring_view text, std::size_t at, Place const& place) {
  wchar_t const c = text[at];
  bool const is_end = at == 0 || at + 1 == text.size();
  bool const is_blank = c == L' ' || c == L'\t';
  auto const value = static_cast<char32_t>(c);
  bool const is_control = (value < 0x20 && c != L'\t') || value == 0x7F;
  return is_control || (is_blank && is_end) || !is_scalar(value) ||
         place.special.find(c) != std::wstring_view::npos ||
         (at == 0 && place.special_first.find(c) != std::wstring_view::npos) ||
         starts_escape(text.substr(at));
}

std::wstring escape(wchar_t c) {
  auto const value = static_cast<char32_t>(c);
  std::wstring digits;
  for (char32_t rest = value; rest != 0; rest >>= 4U) {
    digits.insert(digits.begin(), hex_digits[rest & 0xFU]);
  }
  if (value < 0x80) {
    digits.insert(0, 2 - digits.size(), L'0');
    return L"%" + digits;
  }
  return L"%{" + digits + L"}";
}

std::string encode(HString const& text, Place const& place) {
  std::wstring const plain = text.get_ws();
  std::wstring encoded;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    if (needs_escape(plain, i, place)) {
      encoded += escape(plain[i]);
    } else {
      encoded += plain[i];
    }
  }
  return to_utf8(encoded);
}

std::string encode_name(HString const& name, Place const& place) {
  return name.empty() ? to_utf8(empty_name) : encode(name, place);
}

/// Length of the escape at the front, with what it stands for appended; 0 where there is none.
std::size_t decode_escape(std::wstring_view text, std::wstring& decoded) {
  if (!starts_escape(text)) {
    return 0;
  }
  bool const is_braced = text[1] == L'{';
  std::size_t const start = is_braced ? 2 : 1;
  std::size_t const end = is_braced ? text.find(L'}') : 3;
  constexpr std::size_t most_digits = 8;
  if (end == std::wstring_view::npos || end - start > most_digits) {
    return 0;
  }
  std::string const digits(text.begin() + static_cast<std::ptrdiff_t>(start),
                           text.begin() + static_cast<std::ptrdiff_t>(end));
  std::uint32_t value = 0;
  auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (result.ptr != digits.data() + digits.size() || (!is_braced && value >= 0x80)) {
    return 0;
  }
  if (!digits.empty()) {
    decoded += static_cast<wchar_t>(value);
  }
  return is_braced ? end + 1 : end;
}

HString decode(std::string_view utf8) {
  std::wstring const encoded = from_utf8(utf8);
  std::wstring_view rest = encoded;
  std::wstring decoded;
  while (!rest.empty()) {
    std::size_t length = decode_escape(rest, decoded);
    if (length == 0) {
      decoded += rest.front();
      length = 1;
    }
    rest.remove_prefix(length);
  }
  return {decoded.data(), static_cast<int>(decoded.size())};
}

HString comment_text(char const* comment) {
  return comment == nullptr ? HString() : comment;
}

HIniSection read_section(Parser const& parser, Parser::Entry const& entry) {
  HIniSection section;
  section.str_name = decode(entry.pItem);
  section.str_comment = comment_text(entry.pComment);
  Parser::TNamesDepend keys;
  parser.GetAllKeys(entry.pItem, keys);
  keys.sort(Parser::Entry::LoadOrder());
  for (Parser::Entry const& key : keys) {
    HIniKey read;
    read.str_key = decode(key.pItem);
    read.str_value = decode(parser.GetValue(entry.pItem, key.pItem, ""));
    read.str_comment = comment_text(key.pComment);
    section.vt_key.push_back(read);
  }
  return section;
}

/// Comment lines as they are; a line that is none becomes one.
void append_comment(std::string& out, HString const& comment) {
  std::vector<HString> lines;
  comment.get_vt_str_by_sep2(lines, L"\n");
  for (HString const& line : lines) {
    std::string utf8 = to_utf8(line.get_ws());
    std::erase_if(utf8, [](char c) { return c == '\r' || c == '\0'; });
    bool const is_comment = utf8.empty() || utf8[0] == ';' || utf8[0] == '#';
    out.append(is_comment ? "" : "; ").append(utf8).append("\n");
  }
}

void append_section(std::string& out, HIniSection const& section) {
  bool const is_nameless_front = out.empty() && section.str_name.empty();
  out += out.empty() ? "" : "\n";
  append_comment(out, section.str_comment);
  if (!is_nameless_front) {
    out.append("[").append(encode_name(section.str_name, in_section_name)).append("]\n");
  }
  for (HIniKey const& key : section.vt_key) {
    append_comment(out, key.str_comment);
    out.append(encode_name(key.str_key, in_key)).append(" = ");
    out.append(encode(key.str_value, in_value)).append("\n");
  }
}

}  // namespace

IniDocument parse_ini(std::string_view utf8) {
  // The line end in front keeps a comment at the top with the entry that it stands before.
  std::string text = "\n";
  text += utf8;
  std::erase(text, '\0');
  text.append("\n[").append(end_section).append("]\n");
  Parser parser(true, false, false);
  IniDocument document;
  if (parser.LoadData(text) < 0) {
    return document;
  }
  Parser::TNamesDepend sections;
  parser.GetAllSections(sections);
  sections.sort(Parser::Entry::LoadOrder());
  for (Parser::Entry const& entry : sections) {
    if (entry.pItem == end_section) {
      document.trailing_comment = comment_text(entry.pComment);
    } else {
      document.sections.push_back(read_section(parser, entry));
    }
  }
  return document;
}

std::string format_ini(IniDocument const& document) {
  std::string out;
  for (HIniSection const& section : document.sections) {
    append_section(out, section);
  }
  if (document.trailing_comment.not_empty()) {
    out += out.empty() ? "" : "\n";
    append_comment(out, document.trailing_comment);
  }
  return out;
}

}  // namespace morvabs
