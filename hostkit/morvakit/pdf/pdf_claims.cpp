#include "morvakit/pdf/pdf_claims.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include <Dict.h>

namespace morvakit {

namespace {

/// How far the library looks for a header, and for the first object of a file that is laid out for
/// the network.
constexpr std::int64_t head_size = 1024;
/// How far in front of the end it looks for the position of the last table.
constexpr std::int64_t tail_size = 24576 + 1024;
constexpr std::string_view digits = "0123456789";
constexpr std::string_view spaces{" \t\r\n\v\f\0", 7};

std::string read_piece(Orlec::Reader const& reader, std::int64_t from, std::int64_t size) {
  std::string piece(static_cast<std::size_t>(size), '\0');
  auto const got = reader.ReadAt(from, piece.data(), size);
  piece.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  return piece;
}

/// Cuts off the end what is made of those characters, and gives it.
std::string_view cut_last(std::string_view& text, std::string_view characters) {
  auto const cut = text.substr(text.find_last_not_of(characters) + 1);
  text.remove_suffix(cut.size());
  return cut;
}

std::int64_t number_of(std::string_view text) {
  // More digits are beyond every bound.
  constexpr std::size_t most = 12;
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  if (text.size() > most) {
    return std::numeric_limits<std::int64_t>::max() / 2;
  }
  std::int64_t number = 0;
  for (char const digit : text) {
    number = number * 10 + (digit - '0');
  }
  return number;
}

/// The number of the object whose "obj" stands behind the text; 0 where none does.
std::int64_t number_in_front(std::string_view text) {
  bool const has_generation = !cut_last(text, spaces).empty() && !cut_last(text, digits).empty();
  return has_generation && !cut_last(text, spaces).empty() ? number_of(cut_last(text, digits)) : 0;
}

std::int64_t value_of(Object const& object) {
  return object.isIntOrInt64() ? object.getIntOrInt64() : -1;
}

std::int64_t stated_size(Parser& parser) {
  auto const trailer = parser.getObj();
  return trailer.isDict() ? value_of(trailer.getDict()->lookupNF("Size")) : 0;
}

}  // namespace

PdfTables::PdfTables(Orlec::Reader const& reader, BaseStream& stream) : reader_(reader) {
  auto const header = read_piece(reader, 0, head_size).find("%PDF-");
  start_ = header == std::string::npos ? 0 : static_cast<std::int64_t>(header);
  find_last();
  while (!open_.empty()) {
    auto const position = open_.back();
    open_.pop_back();
    if (position >= 0 && position < reader.GetSize() && met_.insert(position).second) {
      Parser parser(nullptr, stream.makeSubStream(start_ + position, false, 0, Object(objNull)),
                    true);
      take(parser);
    }
  }
}

/// The library begins at the end of the file, or else behind the first object.
void PdfTables::find_last() {
  constexpr std::string_view keyword = "startxref";
  constexpr std::string_view end = "endobj";
  auto const tail =
      read_piece(reader_, std::max<std::int64_t>(reader_.GetSize() - tail_size, 0), tail_size);
  if (auto const found = tail.rfind(keyword); found != std::string::npos) {
    auto text = std::string_view(tail).substr(found + keyword.size());
    text.remove_prefix(std::min(text.find_first_not_of(spaces), text.size()));
    open_.push_back(number_of(text.substr(0, text.find_first_not_of(digits))));
  }
  auto const head = read_piece(reader_, start_, head_size);
  if (auto const found = head.find(end); found != std::string::npos) {
    open_.push_back(static_cast<std::int64_t>(found + end.size()));
  }
}

void PdfTables::take(Parser& parser) {
  auto const first = parser.getObj(true);
  if (first.isCmd("xref")) {
    take_table(parser);
  } else if (first.isInt()) {
    take_stream(parser);
  }
}

void PdfTables::take_table(Parser& parser) {
  auto first = parser.getObj(true);
  while (!first.isCmd("trailer")) {
    auto const count = parser.getObj(true);
    if (!first.isInt() || !count.isInt()) {
      return;
    }
    claim(value_of(first) + value_of(count));
    for (int i = 0; i < count.getInt(); ++i) {
      bool const has_place = parser.getObj(true).isIntOrInt64() && parser.getObj(true).isInt();
      if (!has_place || !parser.getObj(true).isCmd()) {
        return;
      }
    }
    first = parser.getObj(true);
  }
  auto const trailer = parser.getObj();
  if (trailer.isDict()) {
    claim(value_of(trailer.getDict()->lookupNF("Size")));
    open(trailer.getDict()->lookupNF("Prev"));
    open(trailer.getDict()->lookupNF("XRefStm"));
  }
}

void PdfTables::take_stream(Parser& parser) {
  if (!parser.getObj(true).isInt() || !parser.getObj(true).isCmd("obj")) {
    return;
  }
  auto const table = parser.getObj();
  if (!table.isStream()) {
    return;
  }
  auto const& dictionary = *table.streamGetDict();
  claim(value_of(dictionary.lookupNF("Size")));
  auto const& index = dictionary.lookupNF("Index");
  for (int i = 0; index.isArray() && i + 1 < index.arrayGetLength(); i += 2) {
    claim(value_of(index.arrayGetNF(i)) + value_of(index.arrayGetNF(i + 1)));
  }
  open(dictionary.lookupNF("Prev"));
}

void PdfTables::open(Object const& position) {
  // Some programs write a reference for a number.
  open_.push_back(position.isRef() ? position.getRefNum() : value_of(position));
}

void PdfTables::claim(std::int64_t objects) {
  objects_ = std::max(objects_, objects);
}

std::int64_t highest_object_number(Orlec::Reader const& reader, BaseStream& stream) {
  constexpr std::int64_t piece_size = 256 << 10;
  // Number, generation and keyword stand on three lines at the most, of which the library reads so
  // many bytes.
  constexpr std::int64_t three_lines = 768;
  constexpr std::string_view object = "obj";
  constexpr std::string_view trailer = "trailer";
  std::int64_t highest = 0;
  for (std::int64_t from = 0; from < reader.GetSize(); from += piece_size) {
    auto const piece = read_piece(reader, from, piece_size + three_lines);
    std::string_view const text = piece;
    for (auto at = text.find(object); at != text.npos; at = text.find(object, at + 1)) {
      highest = std::max(highest, number_in_front(text.substr(0, at)));
    }
    for (auto at = text.find(trailer); at != text.npos; at = text.find(trailer, at + 1)) {
      auto const behind = from + static_cast<std::int64_t>(at + trailer.size());
      Parser parser(nullptr, stream.makeSubStream(behind, false, 0, Object(objNull)), false);
      highest = std::max(highest, stated_size(parser));
    }
  }
  return highest;
}

}  // namespace morvakit
