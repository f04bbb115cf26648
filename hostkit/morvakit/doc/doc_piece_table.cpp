#include "morvakit/doc/doc_piece_table.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "morvakit/doc/doc_properties.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using tessarine::little16;
using tessarine::little32;

/// The lists of changes, which pieces refer to by their number, and the table of pieces behind.
struct PieceLists {
  /// Which lists mark their pieces as deleted.
  std::vector<bool> deletes;
  std::string_view table;
};

bool marks_deleted(std::string_view list, bool is_old) {
  while (auto const property = take_property(list, is_old)) {
    if (property->number == word_deleted) {
      return property->is_on();
    }
  }
  return false;
}

PieceLists split_lists(std::string_view bytes, bool is_old) {
  constexpr char changes = 1;
  constexpr char pieces = 2;
  PieceLists lists;
  while (!bytes.empty() && bytes[0] == changes) {
    auto const size = std::size_t{little16(bytes, 1)};
    lists.deletes.push_back(
        marks_deleted(bytes.substr(std::min<std::size_t>(3, bytes.size()), size), is_old));
    bytes.remove_prefix(std::min(bytes.size(), 3 + size));
  }
  auto const size = std::size_t{little32(bytes, 1)};
  if (bytes.size() > 5 && bytes[0] == pieces && size <= bytes.size() - 5) {
    lists.table = bytes.substr(5, size);
  }
  return lists;
}

/// What a piece's own change says: either one property with its value, or the number of a list.
bool is_deleted_by(std::uint16_t change, PieceLists const& lists) {
  constexpr std::uint16_t short_form_of_deleted = 0x41;
  if ((change & 1U) != 0) {
    auto const list = std::size_t{change} >> 1U;
    return list < lists.deletes.size() && lists.deletes[list];
  }
  return ((change >> 1U) & 0x7FU) == short_form_of_deleted && (change & 0x100U) != 0;
}

WordPiece make_piece(std::string_view entry, WordHeader const& header, PieceLists const& lists) {
  constexpr std::uint32_t in_bytes = 0x40000000;
  auto const place = little32(entry, 2);
  WordPiece piece;
  piece.is_deleted = is_deleted_by(little16(entry, 6), lists);
  if (header.is_old()) {
    piece.is_wide = header.has_wide_text();
    piece.offset = place;
  } else {
    piece.is_wide = (place & in_bytes) == 0;
    piece.offset = piece.is_wide ? place : (place & ~in_bytes) / 2;
  }
  return piece;
}

/// Finds text among bytes that are said to hold nothing else: from the first unit that is not zero
/// up to the next that is.
void trim_to_text(Orlec::Reader const& stream, WordExtent extent, WordPiece& piece) {
  constexpr std::int64_t chunk_size = 64 << 10;
  std::size_t const unit_size = piece.is_wide ? 2 : 1;
  piece.offset = extent.offset;
  for (std::int64_t at = 0; at < extent.size; at += chunk_size) {
    auto const chunk =
        tessarine::read_piece(stream, extent.offset + at, std::min(extent.size - at, chunk_size));
    for (std::size_t i = 0; i + unit_size <= chunk.size(); i += unit_size) {
      bool const is_zero = chunk[i] == '\0' && chunk[i + unit_size - 1] == '\0';
      if (!is_zero) {
        ++piece.end;
      } else if (piece.end == 0) {
        piece.offset += static_cast<std::int64_t>(unit_size);
      } else {
        return;
      }
    }
    if (chunk.empty()) {
      return;
    }
  }
}

/// Without a table, text that holds zero bytes is taken for UTF-16.
WordPiece whole_text(WordHeader const& header, Orlec::Reader const& stream) {
  constexpr std::int64_t sample_size = 4096;
  auto const text = header.text();
  WordPiece piece;
  if (header.is_old()) {
    piece.is_wide = header.has_wide_text();
    piece.offset = text.offset;
    piece.end = text.size / (piece.is_wide ? 2 : 1);
    return piece;
  }
  auto const sample = tessarine::read_piece(stream, text.offset, std::min(text.size, sample_size));
  auto const first = std::min(sample.find_first_not_of('\0'), sample.size());
  piece.is_wide =
      sample.find('\0', first) != std::string::npos || text.size >= 2 * header.total_length();
  trim_to_text(stream, text, piece);
  return piece;
}

}  // namespace

std::vector<WordPiece> read_pieces(WordHeader const& header, Orlec::Reader const& stream,
                                   Orlec::Reader const* tables, ReadContext& context) {
  constexpr std::size_t entry_size = 8;
  auto const extent = header.table(WordTable::pieces);
  std::string bytes;
  if (tables != nullptr && extent.size > 0 &&
      context.charge_memory(static_cast<std::size_t>(
          std::clamp<std::int64_t>(tables->GetSize() - extent.offset, 0, extent.size)))) {
    bytes = tessarine::read_piece(*tables, extent.offset, extent.size);
  }
  auto const lists = split_lists(bytes, header.is_old());
  auto const count = lists.table.size() < 4 ? 0 : (lists.table.size() - 4) / (4 + entry_size);
  std::vector<WordPiece> pieces;
  if (!context.charge_memory(count * sizeof(WordPiece))) {
    return pieces;
  }
  for (std::size_t i = 0; i < count; ++i) {
    auto piece =
        make_piece(lists.table.substr(4 * (count + 1) + i * entry_size, entry_size), header, lists);
    piece.begin = little32(lists.table, 4 * i);
    piece.end = little32(lists.table, 4 * (i + 1));
    auto const expected = pieces.empty() ? 0 : pieces.back().end;
    if (piece.begin != expected || piece.end < piece.begin) {
      context.note(ParseOutcome::damaged, "the table of the text's pieces is out of order");
      break;
    }
    pieces.push_back(piece);
  }
  if (pieces.empty()) {
    if (!header.is_old()) {
      context.note(ParseOutcome::damaged, "the table of the text's pieces is missing");
    }
    pieces.push_back(whole_text(header, stream));
  }
  return pieces;
}

}  // namespace morvakit
