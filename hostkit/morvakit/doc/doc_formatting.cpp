#include "morvakit/doc/doc_formatting.h"

#include <algorithm>
#include <limits>

#include "morvakit/doc/doc_properties.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;
using tessarine::read_piece;

constexpr std::int64_t page_size = 512;
constexpr auto everything = std::numeric_limits<std::int64_t>::max();

std::size_t byte_at(std::string_view bytes, std::size_t offset) {
  return offset < bytes.size() ? static_cast<unsigned char>(bytes[offset]) : 0;
}

std::string_view part(std::string_view bytes, std::size_t offset, std::size_t size) {
  return bytes.substr(std::min(offset, bytes.size()), size);
}

}  // namespace

FormattingPages::FormattingPages(WordHeader const& header, Orlec::Reader const& stream,
                                 Orlec::Reader const* tables, Form form, ReadContext& context)
    : stream_(stream), form_(form), is_old_(header.is_old()) {
  auto const extent = header.table(form == Form::characters ? WordTable::character_pages
                                                            : WordTable::paragraph_pages);
  if (tables == nullptr || extent.offset + extent.size > tables->GetSize() ||
      !context.charge_memory(static_cast<std::size_t>(extent.size))) {
    return;
  }
  directory_ = read_piece(*tables, extent.offset, extent.size);
  auto const number_size = is_old_ ? std::size_t{2} : std::size_t{4};
  count_ = directory_.size() < 4 ? 0 : (directory_.size() - 4) / (4 + number_size);
}

std::int64_t FormattingPages::place(std::size_t index) const {
  return little32(directory_, 4 * index);
}

std::int64_t FormattingPages::page_number(std::size_t index) const {
  constexpr std::uint32_t number_bits = 0x3FFFFF;
  auto const numbers = 4 * (count_ + 1);
  return is_old_ ? little16(directory_, numbers + 2 * index)
                 : little32(directory_, numbers + 4 * index) & number_bits;
}

FormattingPages::Run const& FormattingPages::find(std::int64_t offset) {
  if (offset < run_.begin || offset >= run_.end) {
    run_ = look_up(offset);
  }
  return run_;
}

FormattingPages::Run FormattingPages::look_up(std::int64_t offset) {
  std::size_t first = 0;
  std::size_t last = count_ + 1;
  while (first < last) {
    auto const middle = (first + last) / 2;
    if (place(middle) <= offset) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  if (first == 0 || first > count_) {
    return {offset, first == 0 && count_ > 0 ? place(0) : everything, {}};
  }
  auto const number = page_number(first - 1);
  if (number != page_number_) {
    page_ = read_piece(stream_, number * page_size, page_size);
    page_number_ = number;
  }
  return look_up_in_page(offset, place(first));
}

FormattingPages::Run FormattingPages::look_up_in_page(std::int64_t offset, std::int64_t end) const {
  auto const count = byte_at(page_, static_cast<std::size_t>(page_size) - 1);
  for (std::size_t i = 0; i < count; ++i) {
    std::int64_t const run_begin = little32(page_, 4 * i);
    std::int64_t const run_end = little32(page_, 4 * (i + 1));
    if (run_begin <= offset && offset < run_end) {
      return {run_begin, run_end,
              form_ == Form::characters ? character_list(i, count) : paragraph_list(i, count)};
    }
  }
  return {offset, std::max(end, offset + 1), {}};
}

std::string_view FormattingPages::character_list(std::size_t index, std::size_t count) const {
  auto const at = 2 * byte_at(page_, 4 * (count + 1) + index);
  return at == 0 ? std::string_view() : part(page_, at + 1, byte_at(page_, at));
}

std::string_view FormattingPages::paragraph_list(std::size_t index, std::size_t count) const {
  constexpr std::size_t style_size = 2;
  auto const reference_size = is_old_ ? std::size_t{7} : std::size_t{13};
  auto const at = 2 * byte_at(page_, 4 * (count + 1) + index * reference_size);
  auto const words = byte_at(page_, at);
  if (at == 0) {
    return {};
  }
  if (is_old_) {
    return part(page_, at + 1 + style_size, std::max(words * 2, style_size) - style_size);
  }
  bool const is_even = words == 0;
  auto const begin = at + (is_even ? 2 : 1);
  auto const size = is_even ? 2 * byte_at(page_, at + 1) : 2 * words - 1;
  return part(page_, begin + style_size, std::max(size, style_size) - style_size);
}

WordFormatting::WordFormatting(WordHeader const& header, Orlec::Reader const& stream,
                               Orlec::Reader const* tables, Orlec::Reader const* data,
                               ReadContext& context)
    : is_old_(header.is_old()),
      data_(data),
      character_pages_(header, stream, tables, FormattingPages::Form::characters, context),
      paragraph_pages_(header, stream, tables, FormattingPages::Form::paragraphs, context) {}

CharacterFormat const& WordFormatting::characters_at(std::int64_t offset) {
  if (offset >= characters_begin_ && offset < characters_end_) {
    return characters_;
  }
  auto const& run = character_pages_.find(offset);
  characters_begin_ = run.begin;
  characters_end_ = run.end;
  characters_ = {};
  auto properties = run.properties;
  while (auto const property = take_property(properties, is_old_)) {
    auto const operand = property->operand;
    switch (property->number) {
      case word_deleted:
        characters_.is_deleted = property->is_on();
        break;
      case word_is_data:
        characters_.is_data = property->is_on();
        break;
      case word_is_object:
        characters_.is_object = property->is_on();
        break;
      case word_picture_location:
        characters_.data_offset = little32(operand, is_old_ ? 1 : 0);
        break;
      case word_symbol:
        characters_.symbol = is_old_ ? static_cast<char16_t>(0xF000U | byte_at(operand, 3))
                                     : static_cast<char16_t>(little16(operand, 2));
        break;
      default:
        break;
    }
  }
  return characters_;
}

ParagraphFormat WordFormatting::paragraph_at(std::int64_t offset) {
  ParagraphFormat format;
  apply(paragraph_pages_.find(offset).properties, format);
  return format;
}

void WordFormatting::apply(std::string_view properties, ParagraphFormat& format) const {
  std::string large;
  while (auto const property = take_property(properties, is_old_)) {
    switch (property->number) {
      case word_in_table:
        format.is_in_table = property->is_on();
        break;
      case word_row_end:
        format.ends_row = property->is_on();
        break;
      case word_inner_cell_end:
        format.ends_inner_cell = property->is_on();
        break;
      case word_inner_row_end:
        format.ends_inner_row = property->is_on();
        break;
      case word_large_list:
      case word_older_large_list:
        // It goes on elsewhere, once: a list there that goes on again would have no end.
        if (large.empty()) {
          large = large_list(property->operand);
          properties = large;
        }
        break;
      default:
        break;
    }
  }
}

std::string WordFormatting::large_list(std::string_view operand) const {
  // What tables are made of stands in front; behind it come the widths of their cells.
  constexpr std::int64_t most = 1024;
  if (data_ == nullptr) {
    return {};
  }
  std::int64_t const offset = little32(operand, 0);
  std::int64_t const size = little16(read_piece(*data_, offset, 2), 0);
  return read_piece(*data_, offset + 2, std::min(size, most));
}

}  // namespace morvakit
