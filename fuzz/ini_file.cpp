#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "morvabs/ini_text.h"

#include "fuzz/require.h"

// INI files: what was read is written and read again as it was.

namespace {

using fuzz::require;
using morvabs::IniDocument;

/// The whole document as one text.
std::wstring text_of(IniDocument const& document) {
  auto const quoted = [](HString const& text) {
    return std::to_wstring(text.size()) + L"'" + text.get_ws() + L"'";
  };
  std::wstring text = quoted(document.trailing_comment);
  for (HIniSection const& section : document.sections) {
    text += L"\n" + quoted(section.str_comment) + quoted(section.str_name);
    for (HIniKey const& key : section.vt_key) {
      text += quoted(key.str_comment) + quoted(key.str_key) + quoted(key.str_value);
    }
  }
  return text;
}

void check_names(IniDocument const& document) {
  std::set<HString> sections;
  for (HIniSection const& section : document.sections) {
    require(sections.insert(section.str_name).second, "sections of one name are one");
    std::set<HString> keys;
    for (HIniKey const& key : section.vt_key) {
      require(keys.insert(key.str_key).second, "keys of one name are one");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const bytes(reinterpret_cast<char const*>(data), size);
  IniDocument const document = morvabs::parse_ini(morvabs::decode_ini(bytes));
  check_names(document);
  std::string const written = morvabs::format_ini(document);
  IniDocument const again = morvabs::parse_ini(morvabs::decode_ini(written));
  require(text_of(again) == text_of(document), "what is written is read as it was");
  require(morvabs::format_ini(again) == written, "a file that is rewritten stays as it is");
  return 0;
}
