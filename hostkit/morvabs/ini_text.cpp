#include "morvabs/ini_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <new>
#include <utility>

#include <SimpleIni.h>

#include "host/utf8.h"
#include "morvabs/text_decoder.h"

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
  constexpr std::size_t most_digits = 8;
  bool const is_braced = text[1] == L'{';
  std::size_t const start = is_braced ? 2 : 1;
  std::size_t const end = is_braced ? text.substr(0, start + most_digits + 1).find(L'}') : 3;
  if (end == std::wstring_view::npos) {
    return 0;
  }
  std::wstring_view const wide_digits = text.substr(start, end - start);
  if (!std::all_of(wide_digits.begin(), wide_digits.end(), is_hex_digit)) {
    return 0;
  }
  std::string const digits(wide_digits.begin(), wide_digits.end());
  std::uint32_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (!is_braced && value >= 0x80) {
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

/// Puts the comment lines of another entry of the same name below those of the first.
void add_comment(HString& comment, HString const& more) {
  if (more.not_empty()) {
    comment = comment.empty() ? more : comment + L"\n" + more;
  }
}

/// Takes a line off the front of a text, which must not be empty.
std::string_view take_line(std::string_view& text) {
  std::size_t const end = std::min(text.find_first_of("\r\n"), text.size());
  std::string_view const line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

bool begins_section(std::string_view line) {
  // NULs are passed over.
  constexpr std::string_view blanks(" \t\0", 3);
  std::size_t const first = line.find_first_not_of(blanks);
  return first != std::string_view::npos && line[first] == '[';
}

/// The package takes all up to the next key for the name of a section whose bracket is not closed.
void blank_broken_sections(std::string& text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    auto const start = static_cast<std::size_t>(rest.data() - text.data());
    std::string_view const line = take_line(rest);
    if (begins_section(line) && line.find(']') == std::string_view::npos) {
      text.replace(start, line.size(), line.size(), ' ');
    }
  }
}

/// Puts a document together in which each name stands once, however often it was encoded and how.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(Parser const& parser) : parser_(parser) {}

  void add_section(Parser::Entry const& entry) {
    HString const name = decode(entry.pItem);
    auto const [place, is_new] = places_.try_emplace(name, Place{document_.sections.size(), {}});
    if (is_new) {
      document_.sections.push_back({name, {}, {}});
    }
    add_comment(document_.sections[place->second.section].str_comment,
                comment_text(entry.pComment));
    Parser::TNamesDepend keys;
    parser_.GetAllKeys(entry.pItem, keys);
    keys.sort(Parser::Entry::LoadOrder());
    for (Parser::Entry const& key : keys) {
      add_key({decode(key.pItem), decode(parser_.GetValue(entry.pItem, key.pItem, "")),
               comment_text(key.pComment)},
              place->second);
    }
  }

  void add_end(Parser::Entry const& entry) {
    document_.trailing_comment = comment_text(entry.pComment);
  }

  IniDocument take() && { return std::move(document_); }

 private:
  /// Where a section stands, and its keys in it.
  struct Place {
    std::size_t section;
    std::map<HString, std::size_t> keys;
  };

  /// Of two values the later one counts.
  void add_key(HIniKey const& key, Place& place) {
    std::vector<HIniKey>& keys = document_.sections[place.section].vt_key;
    auto const [found, is_new] = place.keys.try_emplace(key.str_key, keys.size());
    if (is_new) {
      keys.push_back(key);
    } else {
      keys[found->second].str_value = key.str_value;
      add_comment(keys[found->second].str_comment, key.str_comment);
    }
  }

  Parser const& parser_;
  IniDocument document_;
  std::map<HString, Place> places_;
};

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
  bool const is_nameless_front = out.empty() && section.str_name.empty() &&
                                 section.str_comment.empty() && !section.vt_key.empty();
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

std::string decode_ini(std::string_view bytes) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  std::size_t const start = bytes.starts_with(mark) ? mark.size() : 0;
  return is_utf8(bytes) ? std::string(bytes.substr(start)) : decode_text(bytes);
}

bool is_within_ini_limits(std::string_view utf8) {
  std::size_t entries = 0;
  while (!utf8.empty()) {
    std::string_view const line = take_line(utf8);
    bool const is_section = begins_section(line);
    entries += is_section || line.find('=') != std::string_view::npos ? 1U : 0U;
    if (entries > most_ini_entries || (is_section && line.size() > longest_ini_section)) {
      return false;
    }
  }
  return true;
}

IniDocument parse_ini(std::string_view utf8) {
  // The line end in front keeps a comment at the top with the entry that it stands before.
  std::string text = "\n";
  text += utf8;
  std::erase(text, '\0');
  blank_broken_sections(text);
  text.append("\n[").append(end_section).append("]\n");
  Parser parser(true, false, false);
  SI_Error const result = parser.LoadData(text);
  if (result == SI_NOMEM) {
    // Taken for an empty file, it would be one after the next change.
    throw std::bad_alloc();
  }
  if (result < 0) {
    return {};
  }
  Parser::TNamesDepend sections;
  parser.GetAllSections(sections);
  sections.sort(Parser::Entry::LoadOrder());
  DocumentBuilder document(parser);
  for (Parser::Entry const& entry : sections) {
    if (entry.pItem == end_section) {
      document.add_end(entry);
    } else {
      document.add_section(entry);
    }
  }
  return std::move(document).take();
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
