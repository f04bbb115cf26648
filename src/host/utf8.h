#pragma once

#include <string>
#include <string_view>

#include "host/export.h"

namespace morvabs {

/// What becomes of a byte that is no part of a well-formed sequence.
enum class InvalidByte {
  replaced,  ///< U+FFFD: for text
  escaped,   ///< U+DC80 to U+DCFF, from which the byte can be told: for file names
};

/// UTF-8 for the text; a value that is no Unicode scalar value is written as U+FFFD.
MORVA_EXPORT std::string to_utf8(std::wstring_view text);
MORVA_EXPORT void append_utf8(std::string& out, std::wstring_view text);  ///< Adds it to `out`.
/// The same for one value, into a buffer of at least 4 bytes; returns the number of bytes, 1 to 4.
MORVA_EXPORT std::size_t encode_utf8(char32_t value, char* out);

/// The text behind UTF-8; each byte that is no part of a well-formed sequence becomes one U+FFFD.
MORVA_EXPORT std::wstring from_utf8(std::string_view utf8);
MORVA_EXPORT void append_wide(std::wstring& out, std::string_view utf8);  ///< Adds it to `out`.
MORVA_EXPORT void append_wide(std::wstring& out, std::string_view utf8, InvalidByte invalid);

/// Whether the bytes are well-formed UTF-8 from beginning to end.
MORVA_EXPORT bool is_utf8(std::string_view bytes);

/// Length of the longest prefix that is well-formed UTF-8.
MORVA_EXPORT std::size_t valid_utf8_prefix(std::string_view bytes);

/// Length of the longest prefix that does not end within a sequence: what a reader of chunks may
/// convert now, keeping the rest for the next chunk.
MORVA_EXPORT std::size_t complete_utf8_prefix(std::string_view bytes);

}  // namespace morvabs
