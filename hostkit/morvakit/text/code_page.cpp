#include "morvakit/text/code_page.h"

#include <algorithm>
#include <array>

#include "morvabs/text_decoder.h"

namespace morvakit {

namespace {

struct NamedCodePage {
  int number;
  std::string_view name;
};

// Those that ICU does not know by "windows-" or "ibm-" and the number.
constexpr std::array named_code_pages{
    NamedCodePage{932, "windows-31j"},
    NamedCodePage{936, "GB18030"},
    NamedCodePage{949, "windows-949"},
    NamedCodePage{950, "Big5-HKSCS"},
    NamedCodePage{1200, "UTF-16LE"},
    NamedCodePage{1201, "UTF-16BE"},
    NamedCodePage{1361, "ibm-1363"},
    NamedCodePage{10000, "macintosh"},
    NamedCodePage{10001, "Shift_JIS"},
    NamedCodePage{10002, "Big5"},
    NamedCodePage{10003, "EUC-KR"},
    NamedCodePage{10006, "x-mac-greek"},
    NamedCodePage{10007, "x-mac-cyrillic"},
    NamedCodePage{10008, "GB2312"},
    NamedCodePage{10029, "x-mac-centraleurroman"},
    NamedCodePage{10081, "x-mac-turkish"},
    NamedCodePage{12000, "UTF-32LE"},
    NamedCodePage{12001, "UTF-32BE"},
    NamedCodePage{20127, "windows-1252"},
    NamedCodePage{20866, "KOI8-R"},
    NamedCodePage{20932, "EUC-JP"},
    NamedCodePage{20936, "GB2312"},
    NamedCodePage{21866, "KOI8-U"},
    NamedCodePage{50220, "ISO-2022-JP"},
    NamedCodePage{50221, "ISO-2022-JP"},
    NamedCodePage{50222, "ISO-2022-JP"},
    NamedCodePage{50225, "ISO-2022-KR"},
    NamedCodePage{51932, "EUC-JP"},
    NamedCodePage{51936, "GB2312"},
    NamedCodePage{51949, "EUC-KR"},
    NamedCodePage{52936, "HZ-GB-2312"},
    NamedCodePage{54936, "GB18030"},
    NamedCodePage{65000, "UTF-7"},
    NamedCodePage{65001, "UTF-8"},
};

std::string decode(std::string_view bytes, std::string const& encoding) {
  std::string utf8;
  morvabs::TextDecoder(encoding).decode(bytes, true, utf8);
  return utf8;
}

}  // namespace

std::string code_page_name(int code_page) {
  auto const* const named =
      std::find_if(named_code_pages.begin(), named_code_pages.end(),
                   [code_page](NamedCodePage const& page) { return page.number == code_page; });
  if (named != named_code_pages.end()) {
    return std::string(named->name);
  }
  bool const is_latin = code_page >= 28591 && code_page <= 28605;
  if (is_latin) {
    return "ISO-8859-" + std::to_string(code_page - 28590);
  }
  bool const is_windows = code_page == 874 || (code_page >= 1250 && code_page <= 1258);
  bool const is_dos = code_page >= 437 && code_page <= 869;
  auto name = (is_windows ? "windows-" : "ibm-") + std::to_string(code_page);
  bool const is_known = (is_windows || is_dos) && morvabs::TextDecoder(name).is_known();
  return is_known ? name : std::string();
}

int code_page_of_charset(int charset) {
  struct Charset {
    int number;
    int code_page;
  };
  constexpr std::array charsets{
      Charset{0, 1252},   Charset{1, 1252},   Charset{77, 10000}, Charset{78, 10001},
      Charset{79, 10003}, Charset{80, 10008}, Charset{81, 10002}, Charset{128, 932},
      Charset{129, 949},  Charset{130, 1361}, Charset{134, 936},  Charset{136, 950},
      Charset{161, 1253}, Charset{162, 1254}, Charset{163, 1258}, Charset{177, 1255},
      Charset{178, 1256}, Charset{186, 1257}, Charset{204, 1251}, Charset{222, 874},
      Charset{238, 1250}, Charset{254, 437},  Charset{255, 437},
  };
  auto const* const found =
      std::find_if(charsets.begin(), charsets.end(),
                   [charset](Charset const& known) { return known.number == charset; });
  return found == charsets.end() ? 0 : found->code_page;
}

std::string decode_code_page(std::string_view bytes, int code_page) {
  auto const name = code_page_name(code_page);
  return decode(bytes, name.empty() ? "windows-1252" : name);
}

std::string decode_utf16(std::string_view bytes) {
  return decode(bytes, "UTF-16LE");
}

}  // namespace morvakit
