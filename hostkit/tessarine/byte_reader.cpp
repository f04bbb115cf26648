#include "tessarine/byte_reader.h"

#include <algorithm>

#include "host/utf8.h"

namespace tessarine {

std::string read_piece(Orlec::Reader const& reader, std::int64_t offset, std::int64_t size) {
  auto const left = reader.GetSize() - offset;
  if (offset < 0 || left <= 0 || size <= 0) {
    return {};
  }
  std::string piece(static_cast<std::size_t>(std::min(left, size)), '\0');
  std::size_t filled = 0;
  while (filled < piece.size()) {
    auto const got =
        reader.ReadAt(offset + static_cast<std::int64_t>(filled), piece.data() + filled,
                      static_cast<std::int64_t>(piece.size() - filled));
    if (got <= 0) {
      break;
    }
    filled += static_cast<std::size_t>(got);
  }
  piece.resize(filled);
  return piece;
}

std::uint16_t little16(std::string_view bytes, std::size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < 2) {
    return 0;
  }
  auto const low = static_cast<unsigned char>(bytes[offset]);
  auto const high = static_cast<unsigned char>(bytes[offset + 1]);
  return static_cast<std::uint16_t>(low | high << 8U);
}

std::uint32_t little32(std::string_view bytes, std::size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < 4) {
    return 0;
  }
  return std::uint32_t{little16(bytes, offset)} | std::uint32_t{little16(bytes, offset + 2)} << 16U;
}

std::uint64_t little64(std::string_view bytes, std::size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < 8) {
    return 0;
  }
  return std::uint64_t{little32(bytes, offset)} | std::uint64_t{little32(bytes, offset + 4)} << 32U;
}

std::string ascii_lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
  });
  return lower;
}

std::string name_suffix(Orlec::Reader const& reader) {
  auto const name = morvabs::to_utf8(reader.GetPath().get_short_name().get_ws());
  auto const point = name.rfind('.');
  return point == std::string::npos ? std::string{}
                                    : ascii_lower(std::string_view(name).substr(point + 1));
}

}  // namespace tessarine
