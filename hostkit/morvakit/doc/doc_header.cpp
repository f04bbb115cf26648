#include "morvakit/doc/doc_header.h"

#include <algorithm>
#include <numeric>

#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;

constexpr int latin = 1252;
constexpr std::uint16_t magic_new = 0xA5EC;
constexpr std::uint16_t magic_old = 0xA5DC;
constexpr std::uint16_t first_new_version = 0xC1;

/// The code page of Windows in a language, for those of which it is not 1252.
int code_page_of_language(unsigned language) {
  struct Language {
    unsigned primary;
    int code_page;
  };
  constexpr std::array languages{
      Language{0x01, 1256}, Language{0x02, 1251}, Language{0x04, 936},  Language{0x05, 1250},
      Language{0x08, 1253}, Language{0x0D, 1255}, Language{0x0E, 1250}, Language{0x11, 932},
      Language{0x12, 949},  Language{0x15, 1250}, Language{0x18, 1250}, Language{0x19, 1251},
      Language{0x1A, 1250}, Language{0x1B, 1250}, Language{0x1C, 1250}, Language{0x1E, 874},
      Language{0x1F, 1254}, Language{0x20, 1256}, Language{0x22, 1251}, Language{0x23, 1251},
      Language{0x24, 1250}, Language{0x25, 1257}, Language{0x26, 1257}, Language{0x27, 1257},
      Language{0x29, 1256}, Language{0x2A, 1258}, Language{0x2F, 1251},
  };
  bool const is_traditional_chinese =
      language == 0x0404 || language == 0x0C04 || language == 0x1404;
  if (is_traditional_chinese) {
    return 950;
  }
  auto const* const found = std::find_if(
      languages.begin(), languages.end(),
      [language](Language const& known) { return known.primary == (language & 0x3FFU); });
  return found == languages.end() ? latin : found->code_page;
}

}  // namespace

std::optional<WordHeader> WordHeader::read(Orlec::Reader const& stream, std::int64_t offset) {
  constexpr std::int64_t longest = 2048;
  constexpr std::uint16_t flag_second_table = 0x0200;
  constexpr std::int64_t page_size = 512;
  WordHeader header;
  header.bytes_ = tessarine::read_piece(stream, offset, longest);
  auto const magic = little16(header.bytes_, 0);
  if (magic != magic_new && magic != magic_old) {
    return std::nullopt;
  }
  header.is_old_ = little16(header.bytes_, 2) < first_new_version;
  header.uses_second_table_ = (little16(header.bytes_, 10) & flag_second_table) != 0;
  header.building_blocks_ = little16(header.bytes_, 8) * page_size;
  std::int64_t const text_begin = little32(header.bytes_, 24);
  header.text_ = {text_begin, std::max<std::int64_t>(little32(header.bytes_, 28) - text_begin, 0)};
  if (header.is_old_) {
    header.read_old();
  } else {
    header.read_new();
  }
  return header;
}

void WordHeader::read_new() {
  constexpr std::size_t shorts_offset = 32;
  constexpr std::size_t first_length = 12;
  auto const longs_offset = shorts_offset + 2 + std::size_t{little16(bytes_, shorts_offset)} * 2;
  for (std::size_t i = 0; i < lengths_.size(); ++i) {
    lengths_[i] = little32(bytes_, longs_offset + 2 + first_length + 4 * i);
  }
  auto const count_offset = longs_offset + 2 + std::size_t{little16(bytes_, longs_offset)} * 4;
  tables_count_ = little16(bytes_, count_offset);
  tables_offset_ = count_offset + 2;
}

void WordHeader::read_old() {
  constexpr std::size_t first_length = 0x34;
  constexpr std::uint16_t flag_wide = 0x1000;
  constexpr std::uint16_t macintosh = 256;
  for (std::size_t i = 0; i < lengths_.size(); ++i) {
    lengths_[i] = little32(bytes_, first_length + 4 * i);
  }
  // The list goes on behind this in another form, with nothing in it that is asked for.
  tables_offset_ = 0x58;
  tables_count_ = 38;
  has_wide_text_ =
      (little16(bytes_, 10) & flag_wide) != 0 && text_.size >= 2 * length(WordStory::body);
  code_page_ =
      little16(bytes_, 20) == macintosh ? 10000 : code_page_of_language(little16(bytes_, 6));
}

int WordHeader::code_page(Orlec::Reader const* tables) const {
  constexpr std::int64_t charset_offset = 6;
  auto const fonts = table(WordTable::fonts);
  if (!is_old_ || code_page_ != latin || tables == nullptr || fonts.size <= charset_offset) {
    return code_page_;
  }
  auto const charset = tessarine::read_piece(*tables, fonts.offset + charset_offset, 1);
  auto const of_font =
      charset.empty() ? 0 : code_page_of_charset(static_cast<unsigned char>(charset[0]));
  return of_font == 0 ? latin : of_font;
}

char const* WordHeader::table_stream() const {
  if (is_old_) {
    return "WordDocument";
  }
  return uses_second_table_ ? "1Table" : "0Table";
}

std::int64_t WordHeader::begin(WordStory story) const {
  return std::accumulate(lengths_.begin(), lengths_.begin() + static_cast<std::ptrdiff_t>(story),
                         std::int64_t{0});
}

std::int64_t WordHeader::total_length() const {
  return std::accumulate(lengths_.begin(), lengths_.end(), std::int64_t{0});
}

WordExtent WordHeader::table(WordTable table) const {
  auto const index = static_cast<std::size_t>(table);
  if (index >= tables_count_) {
    return {};
  }
  auto const at = tables_offset_ + 8 * index;
  return {little32(bytes_, at), little32(bytes_, at + 4)};
}

}  // namespace morvakit
