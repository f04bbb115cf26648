#include "morvakit/xls/biff_workbook.h"

#include <algorithm>

#include "morvakit/sheet/sheet_text.h"
#include "morvakit/text/code_page.h"
#include "morvakit/xls/biff_drawing.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

int version_of(std::uint16_t record, std::uint16_t stated) {
  switch (record) {
    case biff::begin_2:
      return 2;
    case biff::begin_3:
      return 3;
    case biff::begin_4:
      return 4;
    default:
      return stated == 0x0500 ? 5 : 8;
  }
}

bool is_ascii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

void BiffText::set_code_page(int number) {
  constexpr int macintosh = 0x8000;
  constexpr int macintosh_page = 10000;
  auto const name = code_page_name(number == macintosh ? macintosh_page : number);
  constexpr int unicode = 1200;
  decoder_ = morvabs::TextDecoder(name.empty() || number == unicode ? "windows-1252" : name);
}

void BiffText::append(BiffCursor& cursor, std::size_t count, std::string& utf8) {
  constexpr int first_unicode_version = 8;
  if (version_ < first_unicode_version) {
    bytes_.clear();
    cursor.append_bytes(count, bytes_);
    std::replace(bytes_.begin(), bytes_.end(), '\0', ' ');
    if (is_ascii(bytes_)) {
      append_low_bytes(utf8, bytes_);
    } else {
      decoder_.decode(bytes_, true, utf8);
    }
    return;
  }
  constexpr unsigned flag_wide = 1;
  constexpr unsigned flag_reading_aid = 4;
  constexpr unsigned flag_formatted = 8;
  constexpr std::uint64_t format_run_size = 4;
  unsigned const flags = cursor.byte();
  std::uint64_t const runs = (flags & flag_formatted) != 0 ? cursor.word() : 0;
  std::uint64_t const aid = (flags & flag_reading_aid) != 0 ? cursor.double_word() : 0;
  cursor.append_characters(count, (flags & flag_wide) != 0, utf8);
  cursor.skip(runs * format_run_size + aid);
}

std::string BiffText::short_string(BiffCursor& cursor) {
  std::string utf8;
  append(cursor, cursor.byte(), utf8);
  return utf8;
}

std::string BiffText::string(BiffCursor& cursor) {
  std::string utf8;
  append(cursor, cursor.word(), utf8);
  return utf8;
}

void BiffWorkbook::begin(BiffStream& records) {
  text_.set_version(version_of(records.type(), tessarine::little16(records.body(), 0)));
}

void BiffWorkbook::take(BiffStream& records) {
  BiffCursor cursor(records);
  switch (records.type()) {
    case biff::file_password:
      context_.end(Orlec::ParseOutcome::encrypted, "the document needs a password");
      break;
    case biff::code_page:
      text_.set_code_page(cursor.word());
      break;
    case biff::date_mode:
      styles_.count_from_1904(cursor.word() != 0);
      break;
    case biff::format_2:
    case biff::format:
      take_format(cursor);
      break;
    case biff::style_3:
    case biff::style_4:
    case biff::style:
      take_style(records);
      break;
    case biff::bound_sheet:
      take_sheet(cursor);
      break;
    case biff::shared_strings:
      take_strings(cursor);
      break;
    case biff::drawing_group:
      context_.count_images(count_drawing_pictures(cursor));
      break;
    default:
      break;
  }
}

// Before version 5 all formats stand in the file, and their order numbers them.
void BiffWorkbook::take_format(BiffCursor& cursor) {
  int number = format_count_++;
  if (text_.version() >= 4) {
    auto const stated = cursor.word();
    number = text_.version() >= 5 ? stated : number;
  }
  styles_.add_format(number,
                     text_.version() >= 8 ? text_.string(cursor) : text_.short_string(cursor));
  // Cells of version 2 name their format without a style between.
  if (text_.version() == 2) {
    styles_.add_style(number);
  }
}

void BiffWorkbook::take_style(BiffStream& records) {
  auto const body = records.body();
  styles_.add_style(records.type() == biff::style ? tessarine::little16(body, 2)
                                                  : tessarine::little16(body, 0) >> 8);
}

void BiffWorkbook::take_sheet(BiffCursor& cursor) {
  constexpr int kind_program = 6;
  Sheet sheet;
  sheet.position = cursor.double_word();
  cursor.skip(1);
  int const kind = cursor.byte();
  sheet.name = text_.short_string(cursor);
  if (kind != kind_program && context_.charge_memory(kept_per_sheet + sheet.name.size())) {
    sheets_.push_back(std::move(sheet));
  }
}

// Behind the strings that the record counts, there may be a few bytes of nothing; but the count may
// as well be too low.
void BiffWorkbook::take_strings(BiffCursor& cursor) {
  constexpr std::uint64_t uses_size = 4;
  cursor.skip(uses_size);
  auto const stated = cursor.double_word();
  std::uint32_t number = 0;
  std::string utf8;
  while (!cursor.at_end() && context_.keep_going()) {
    utf8.clear();
    text_.append(cursor, cursor.word(), utf8);
    strings_.next();
    strings_.append(utf8);
    ++number;
  }
  if (number < stated || (cursor.is_short() && number == stated)) {
    context_.note(Orlec::ParseOutcome::damaged, "the shared strings are cut short");
  }
}

}  // namespace morvakit
