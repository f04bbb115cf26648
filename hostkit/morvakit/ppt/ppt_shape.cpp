#include "morvakit/ppt/ppt_shape.h"

#include <algorithm>
#include <array>

#include "morvakit/ppt/ppt_text.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;

constexpr std::uint16_t number_mask = 0x3fff;
constexpr std::uint16_t data_behind = 0x8000;
constexpr std::uint16_t art_text = 0x00c0;
constexpr std::uint16_t description = 0x0381;
constexpr std::uint16_t table_properties = 0x039f;

/// Properties whose data are lists: corners, segments, guides, shades, dashes, rows.
constexpr std::array<std::uint16_t, 11> lists{0x0145, 0x0146, 0x0151, 0x0152, 0x0155, 0x0156,
                                              0x0157, 0x0197, 0x01cf, 0x0383, 0x03a0};

/// Bytes of a property's data. For some lists the stated size leaves out the head of the list.
std::int64_t data_size(PptStream const& stream, PptRecord const& record, std::int64_t offset,
                       std::uint16_t number, std::int64_t stated) {
  constexpr std::int64_t list_head_size = 6;
  constexpr std::uint16_t four_bytes = 0xfff0;
  if (stated == 0 || std::find(lists.begin(), lists.end(), number) == lists.end()) {
    return stated;
  }
  auto const head = stream.content(record, offset, list_head_size);
  auto const item_size = little16(head, 4) == four_bytes ? 4 : std::int64_t{little16(head, 4)};
  return little16(head, 0) * item_size == stated ? stated + list_head_size : stated;
}

}  // namespace

PptShapeProperties read_shape_properties(PptStream const& stream, PptRecord const& record) {
  constexpr std::int64_t row_size = 6;
  constexpr std::int64_t longest_text = 64 << 10;
  PptShapeProperties properties;
  auto const table = stream.content(record, 0, record.instance * row_size);
  auto behind = static_cast<std::int64_t>(table.size());
  for (std::size_t at = 0; at + row_size <= table.size(); at += row_size) {
    auto const number = static_cast<std::uint16_t>(little16(table, at) & number_mask);
    auto const value = little32(table, at + 2);
    if ((little16(table, at) & data_behind) == 0) {
      properties.is_table = properties.is_table || (number == table_properties && (value & 1) != 0);
      continue;
    }
    if (number == description || number == art_text) {
      auto const bytes =
          stream.content(record, behind, std::min<std::int64_t>(value, longest_text));
      (number == description ? properties.description : properties.word_art) = short_text(bytes);
    }
    behind += data_size(stream, record, behind, number, value);
  }
  return properties;
}

}  // namespace morvakit
