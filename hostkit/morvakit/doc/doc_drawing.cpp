#include "morvakit/doc/doc_drawing.h"

#include <algorithm>
#include <string>

#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;
using tessarine::read_piece;

constexpr std::int64_t head_size = 8;

/// The head of a record: containers hold records, and a shape's options hold its properties.
struct Record {
  explicit Record(std::string_view head)
      : is_container((little16(head, 0) & 0xFU) == 0xFU),
        instance(little16(head, 0) >> 4U),
        type(little16(head, 2)),
        size(little32(head, 4)) {}

  bool is_container;
  unsigned instance;
  std::uint16_t type;
  std::int64_t size;
};

constexpr std::uint16_t first_record = 0xF000;
constexpr std::uint16_t record_picture = 0xF007;
constexpr std::uint16_t record_options = 0xF00B;
constexpr std::uint16_t record_more_options = 0xF121;
constexpr std::uint16_t record_user_options = 0xF122;

std::string text_of(std::string_view bytes) {
  auto text = decode_utf16(bytes.substr(0, bytes.size() / 2 * 2));
  text.resize(std::min(text.size(), text.find('\0')));
  std::replace(text.begin(), text.end(), '\r', '\n');
  return text;
}

/// A list of numbers with values; what is too long for a value follows behind the list, in its
/// order.
void read_options(std::string_view bytes, std::size_t count, TextFlow& flow) {
  constexpr std::size_t entry_size = 6;
  constexpr unsigned complex = 0x8000;
  constexpr unsigned number_bits = 0x3FFF;
  constexpr unsigned word_art = 192;
  constexpr unsigned name = 896;
  constexpr unsigned description = 897;
  auto values = bytes.substr(std::min(bytes.size(), count * entry_size));
  for (std::size_t at = 0; at < count * entry_size && at < bytes.size(); at += entry_size) {
    auto const option = little16(bytes, at);
    if ((option & complex) == 0) {
      continue;
    }
    auto const value = values.substr(0, little32(bytes, at + 2));
    values.remove_prefix(value.size());
    auto const number = option & number_bits;
    if (number == word_art) {
      flow.line(Orlec::ParseTextType_main, text_of(value));
    } else if (number == name || number == description) {
      flow.line(Orlec::ParseTextType_other, text_of(value));
    }
  }
}

}  // namespace

std::int64_t read_drawings(Orlec::Reader const& tables, WordExtent extent, TextFlow& flow) {
  constexpr std::int64_t longest_options = std::int64_t{1} << 20;
  constexpr std::int64_t references_offset = 24;
  std::int64_t pictures = 0;
  auto const end = std::min(extent.offset + extent.size, tables.GetSize());
  // Containers are entered rather than passed over, so that their depth does not matter.
  auto at = extent.offset;
  auto tree_end = at;
  while (at + head_size <= end && flow.context().keep_going()) {
    bool const begins_tree = at >= tree_end;
    // Each tree but the first stands behind a byte that says where it belongs.
    at += begins_tree && at > extent.offset ? 1 : 0;
    Record const record(read_piece(tables, at, head_size));
    at += head_size;
    if (record.type < first_record) {
      break;
    }
    tree_end = begins_tree ? at + record.size : tree_end;
    if (record.is_container) {
      continue;
    }
    auto const size = std::min(record.size, end - at);
    if (record.type == record_picture) {
      pictures += little32(read_piece(tables, at + references_offset, 4), 0) != 0 ? 1 : 0;
    } else if (record.type == record_options || record.type == record_user_options ||
               record.type == record_more_options) {
      read_options(read_piece(tables, at, std::min(size, longest_options)), record.instance, flow);
    }
    at += size;
  }
  return pictures;
}

void read_inline_picture(Orlec::Reader const& data, WordExtent extent, TextFlow& flow) {
  constexpr std::uint16_t with_file_name = 0x66;
  constexpr std::int64_t longest_head = 256;
  auto const head = read_piece(data, extent.offset, longest_head);
  std::size_t head_end = little16(head, 4);
  if (little16(head, 6) == with_file_name && head_end < head.size()) {
    head_end += 1U + static_cast<unsigned char>(head[head_end]);
  }
  auto const passed = static_cast<std::int64_t>(head_end);
  read_drawings(data, {extent.offset + passed, extent.size - passed}, flow);
}

}  // namespace morvakit
