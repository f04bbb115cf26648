#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// Name by which `morvabs::TextDecoder` knows a code page of Windows, DOS or the Macintosh, as
/// "windows-1251" for 1251; empty for a number that is none.
std::string code_page_name(int code_page);

/// The code page of a font's character set, as 936 for 134; 0 for symbols and unknown sets. RTF and
/// the binary formats number the sets alike.
int code_page_of_charset(int charset);

/// A short text in a code page (1252 for an unknown one), or in UTF-16 with the low byte first, as
/// UTF-8. A half pair or an odd byte at the end becomes U+FFFD.
std::string decode_code_page(std::string_view bytes, int code_page);
std::string decode_utf16(std::string_view bytes);

}  // namespace morvakit
