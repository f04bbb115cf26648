#include "morvakit/xls/biff_link.h"

#include <algorithm>
#include <string_view>

#include "morvakit/sheet/sheet_text.h"
#include "morvakit/text/code_page.h"

namespace morvakit {

namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t flag_has_moniker = 0x01;
constexpr std::uint32_t flag_has_display_name = 0x10;
constexpr std::uint32_t flag_has_frame_name = 0x80;
constexpr std::uint32_t flag_moniker_is_text = 0x100;

/// An address is never longer; a claimed size above it is damage.
constexpr std::uint32_t longest_address = std::uint32_t{64} << 10;

std::string until_nul(std::string text) {
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

std::string take_wide(BiffCursor& cursor, std::uint32_t bytes) {
  std::string wide;
  cursor.append_bytes(std::min(bytes, longest_address), wide);
  std::size_t size = 0;
  while (size + 1 < wide.size() && (wide[size] != '\0' || wide[size + 1] != '\0')) {
    size += 2;
  }
  std::string utf8;
  append_utf16(utf8, std::string_view(wide).substr(0, size));
  return utf8;
}

std::string take_counted_wide(BiffCursor& cursor) {
  return take_wide(cursor, std::min(cursor.double_word(), longest_address) * 2);
}

/// A path in the code page of the machine that it was written on, and mostly again in UTF-16.
std::string take_file(BiffCursor& cursor) {
  constexpr std::uint64_t up_to_wide_size = 24;
  constexpr std::uint64_t key_size = 2;
  constexpr int western = 1252;
  cursor.skip(2);
  std::string path;
  cursor.append_bytes(std::min(cursor.double_word(), longest_address), path);
  cursor.skip(up_to_wide_size);
  if (cursor.double_word() == 0) {
    return decode_code_page(until_nul(path), western);
  }
  auto const size = cursor.double_word();
  cursor.skip(key_size);
  return take_wide(cursor, size);
}

std::string take_moniker(BiffCursor& cursor) {
  constexpr std::size_t id_size = 16;
  std::string id;
  cursor.append_bytes(id_size, id);
  if (id == "\xe0\xc9\xea\x79\xf9\xba\xce\x11\x8c\x82\x00\xaa\x00\x4b\xa9\x0b"sv) {
    return take_wide(cursor, cursor.double_word());
  }
  if (id == "\x03\x03\0\0\0\0\0\0\xc0\0\0\0\0\0\0\x46"sv) {
    return take_file(cursor);
  }
  return {};
}

}  // namespace

std::string read_link_address(BiffCursor& cursor) {
  constexpr std::uint64_t up_to_flags = 28;
  cursor.skip(up_to_flags);
  auto const flags = cursor.double_word();
  if ((flags & flag_has_display_name) != 0) {
    take_counted_wide(cursor);
  }
  if ((flags & flag_has_frame_name) != 0) {
    take_counted_wide(cursor);
  }
  if ((flags & flag_has_moniker) == 0) {
    return {};
  }
  return (flags & flag_moniker_is_text) != 0 ? take_counted_wide(cursor) : take_moniker(cursor);
}

}  // namespace morvakit
