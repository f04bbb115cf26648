#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvakit {

/// One field of a header block.
struct MimeField {
  /// ASCII letters in lower case.
  std::string name;
  /// As it stands in the mail, its lines joined.
  std::string value;
};

/// A field's value of the form "text/plain; charset=gbk; name*0*=UTF-8''%E4...".
struct MimeValue {
  /// In front of the first semicolon, in lower case.
  std::string value;
  /// Names in lower case, values decoded to UTF-8; the pieces of a divided one are put together.
  std::vector<std::pair<std::string, std::string>> parameters;

  /// Empty when there is none of that name.
  std::string_view parameter(std::string_view name) const;
};

/// Parses a structured value (RFC 2045, RFC 2231). Never fails: what is no parameter is left out.
MimeValue parse_mime_value(std::string_view field);

/// A field's value as UTF-8: encoded words (RFC 2047) are decoded wherever they stand, those that
/// are divided within a character put together; raw bytes beyond ASCII are taken in the encoding
/// that they look like, one for the whole field.
std::string decode_header(std::string_view field);

/// Encoding of a text that is said to be in `declared` (empty where nothing is said) and begins
/// with `sample`: the declared one as long as the bytes agree with it, else the one they look like.
/// A set that any bytes agree with gives way to UTF-8 where they are that.
std::string choose_encoding(std::string_view sample, std::string_view declared);

}  // namespace morvakit
