#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace morvakit {

/// The text of a printed header or footer, without the codes for fonts, page numbers and the like.
std::string header_text(std::string_view code);

/// How a cell shows an error, as "#N/A", by the number that stands for it in binary workbooks;
/// empty for an unknown one.
std::string_view error_text(int number);

/// Appends text of a binary workbook as UTF-8: UTF-16 with the low byte first, or the low bytes
/// only of characters whose high byte is 0. A half pair becomes U+FFFD, an odd byte at the end is
/// dropped; of the control characters, tabs stay, NULs become blanks and all others ends of lines.
void append_utf16(std::string& utf8, std::string_view bytes);
void append_low_bytes(std::string& utf8, std::string_view bytes);

/// A number in the four bytes that most numbers in cells fit into.
double unpack_number(std::uint32_t packed);

}  // namespace morvakit
