#include "morvakit/xls/biff_drawing.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "morvakit/sheet/sheet_text.h"

namespace morvakit {

namespace {

/// The head of a record within a drawing. Those that hold others need no nesting here: what they
/// hold follows their head.
struct DrawingRecord {
  unsigned count = 0;
  std::uint16_t type = 0;
  std::uint32_t size = 0;
  bool holds_others = false;
};

constexpr std::uint16_t record_stored_picture = 0xf007;
constexpr std::uint16_t record_properties = 0xf00b;
constexpr std::uint16_t record_more_properties = 0xf122;

DrawingRecord next_record(BiffCursor& cursor) {
  constexpr unsigned version_mask = 0xf;
  unsigned const head = cursor.word();
  DrawingRecord record;
  record.holds_others = (head & version_mask) == version_mask;
  record.count = head >> 4U;
  record.type = cursor.word();
  record.size = cursor.double_word();
  return record;
}

std::string take_text(BiffCursor& cursor, std::uint32_t size) {
  constexpr std::uint32_t longest = std::uint32_t{64} << 10;
  std::string wide;
  cursor.append_bytes(std::min(size, longest), wide);
  cursor.skip(size - std::min(size, longest));
  std::string utf8;
  append_utf16(utf8, std::string_view(wide).substr(0, wide.size() & ~std::size_t{1}));
  while (!utf8.empty() && utf8.back() == ' ') {
    utf8.pop_back();
  }
  return utf8;
}

/// Passes over the data of a property. For some lists the stated size leaves out the list's head,
/// which tells the number and the size of its items.
void skip_data(BiffCursor& cursor, unsigned number, std::uint32_t size) {
  constexpr std::array<unsigned, 11> lists{0x0145, 0x0146, 0x0151, 0x0152, 0x0155, 0x0156,
                                           0x0157, 0x0197, 0x01cf, 0x0383, 0x03a0};
  constexpr std::uint32_t head_size = 6;
  constexpr unsigned four_bytes = 0xfff0;
  if (size < head_size || std::find(lists.begin(), lists.end(), number) == lists.end()) {
    cursor.skip(size);
    return;
  }
  std::uint32_t const items = cursor.word();
  cursor.skip(2);
  unsigned const stated = cursor.word();
  std::uint32_t const item_size = stated == four_bytes ? 4 : stated;
  cursor.skip(items * item_size == size ? size : size - head_size);
}

/// A table of properties, and behind it the data of those that do not fit into it.
void read_properties(BiffCursor& cursor, unsigned count, TextFlow& flow) {
  constexpr unsigned flag_data_behind = 0x8000;
  constexpr unsigned number_mask = 0x3fff;
  constexpr unsigned art_text = 0x00c0;
  constexpr unsigned description = 0x0381;
  struct Property {
    unsigned number;
    std::uint32_t size;
  };
  std::vector<Property> behind;
  for (unsigned i = 0; i < count && !cursor.at_end(); ++i) {
    unsigned const head = cursor.word();
    auto const value = cursor.double_word();
    if ((head & flag_data_behind) != 0) {
      behind.push_back({head & number_mask, value});
    }
  }
  for (auto const& property : behind) {
    if (property.number == art_text) {
      flow.line(Orlec::ParseTextType_main, take_text(cursor, property.size));
    } else if (property.number == description) {
      flow.line(Orlec::ParseTextType_other, take_text(cursor, property.size));
    } else {
      skip_data(cursor, property.number, property.size);
    }
  }
}

}  // namespace

std::int64_t count_drawing_pictures(BiffCursor& cursor) {
  constexpr std::uint64_t up_to_uses = 24;
  constexpr std::uint32_t least_size = up_to_uses + 4;
  std::int64_t pictures = 0;
  while (!cursor.at_end()) {
    auto record = next_record(cursor);
    if (record.type == record_stored_picture && record.size >= least_size) {
      cursor.skip(up_to_uses);
      pictures += cursor.double_word() > 0 ? 1 : 0;
      record.size -= least_size;
    }
    if (!record.holds_others || record.type == record_stored_picture) {
      cursor.skip(record.size);
    }
  }
  return pictures;
}

void read_drawing_properties(BiffCursor& cursor, TextFlow& flow) {
  while (!cursor.at_end() && flow.context().keep_going()) {
    auto const record = next_record(cursor);
    if (record.type == record_properties || record.type == record_more_properties) {
      read_properties(cursor, record.count, flow);
    } else if (!record.holds_others) {
      cursor.skip(record.size);
    }
  }
}

}  // namespace morvakit
