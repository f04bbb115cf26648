#include "tessarine/pdf_encryption.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "morvabs/component.h"

#include "tessarine/byte_reader.h"
#include "tessarine/pdf_component.h"

namespace tessarine {

namespace {

// The dictionary that tells of encryption stands behind or in front of the cross-reference table:
// at the end of the file, and near the beginning of one that is laid out for the network.
constexpr std::int64_t searched_size = 2 << 20;
constexpr std::int64_t piece_size = 64 << 10;
// A document whose cross-reference table is lost is searched from end to end when it is opened.
constexpr std::int64_t largest_opened = std::int64_t{512} << 20;
constexpr std::string_view encryption_key = "/Encrypt";

bool has_key(Orlec::Reader const& reader, std::int64_t from, std::int64_t end) {
  constexpr auto overlap = static_cast<std::int64_t>(encryption_key.size()) - 1;
  for (auto offset = from; offset < end; offset += piece_size) {
    auto const size = std::min(end - offset, piece_size + overlap);
    if (read_piece(reader, offset, size).find(encryption_key) != std::string::npos) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool pdf_needs_password(Orlec::Reader const& reader) {
  auto const size = reader.GetSize();
  if (size > largest_opened) {
    return false;
  }
  auto const is_encrypted =
      size <= 2 * searched_size
          ? has_key(reader, 0, size)
          : has_key(reader, 0, searched_size) || has_key(reader, size - searched_size, size);
  if (!is_encrypted) {
    return false;
  }
  static auto const needs_password = reinterpret_cast<PdfNeedsPasswordFunction>(
      morvabs::component_function(pdf_component_file, pdf_needs_password_symbol));
  return needs_password != nullptr && needs_password(reader);
}

}  // namespace tessarine
