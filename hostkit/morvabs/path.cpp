#include <utility>

#include "host/native_path.h"
#include "host/utf8.h"
#include "morvabs/path_bytes.h"

namespace morvabs {

namespace {

/// Hands the bytes to `append`, those of one character at a time; false where it takes no more, and
/// for a path that no file can have.
template <typename Append>
bool encode_path(HString const& path, Append append) {
  for (wchar_t const c : text_view(path)) {
    auto const value = static_cast<char32_t>(c);
    bool const is_byte = value >= 0xDC80 && value <= 0xDCFF;
    bool const is_surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value == 0 || (is_surrogate && !is_byte) || value > 0x10FFFF) {
      return false;
    }
    char sequence[4] = {static_cast<char>(value - 0xDC00)};
    if (!append(std::string_view(sequence, is_byte ? 1 : encode_utf8(value, sequence)))) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<std::string> to_path(HString const& path) {
  std::string bytes;
  bytes.reserve(path.size());
  auto const append = [&bytes](std::string_view piece) {
    bytes += piece;
    return true;
  };
  return encode_path(path, append) ? std::optional(std::move(bytes)) : std::nullopt;
}

PathBytes::PathBytes(HString const& path) {
  std::size_t length = 0;
  is_path_ = encode_path(path, [&](std::string_view piece) {
    bool const fits = length + piece.size() < bytes_.size();
    length += fits ? piece.copy(bytes_.data() + length, piece.size()) : 0;
    return fits;
  });
  bytes_[length] = '\0';
}

HString from_path(std::string_view path) {
  std::wstring text;
  append_wide(text, path, InvalidByte::escaped);
  return {text.data(), static_cast<int>(text.size())};
}

}  // namespace morvabs
