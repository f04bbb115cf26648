#include "morvakit/xls/biff_sheet.h"

#include <algorithm>
#include <bit>

#include "morvakit/sheet/sheet_text.h"
#include "morvakit/xls/biff_drawing.h"
#include "morvakit/xls/biff_link.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

/// What the text of an object on a sheet is, by the object's type.
Orlec::ParseTextType kind_of_object(int type) {
  constexpr int first_control = 0x07;
  constexpr int picture = 0x08;
  constexpr int polygon = 0x09;
  constexpr int last_control = 0x14;
  constexpr int note = 0x19;
  if (type == note) {
    return Orlec::ParseTextType_comment;
  }
  bool const is_control =
      type >= first_control && type <= last_control && type != polygon && type != picture;
  return is_control ? Orlec::ParseTextType_control : Orlec::ParseTextType_main;
}

}  // namespace

void BiffSheetReader::read(std::int64_t end, bool whole) {
  while (records_.position() < end && records_.next()) {
    auto const type = records_.type();
    if (biff::is_begin(type)) {
      ++depth_;
      last_row_ = -1;
      auto const part = static_cast<BiffPart>(tessarine::little16(records_.body(), 2));
      flow_.context().count_pages(whole && part == BiffPart::sheet ? 1 : 0);
      if (part == BiffPart::chart && !in_chart()) {
        chart_depth_ = depth_;
      }
    } else if (type == biff::end) {
      chart_depth_ = depth_ == chart_depth_ ? 0 : chart_depth_;
      if (--depth_ <= 0) {
        return;
      }
    } else {
      if (whole) {
        workbook_.take(records_);
      }
      take(type);
    }
  }
  if (records_.at_end()) {
    records_.note_cut();
  } else if (!flow_.context().ended()) {
    flow_.context().note(Orlec::ParseOutcome::damaged, "a sheet goes on where another begins");
  }
}

void BiffSheetReader::take(std::uint16_t type) {
  BiffCursor cursor(records_);
  switch (type) {
    case biff::header:
    case biff::footer:
      take_header(cursor);
      break;
    case biff::more_headers:
      take_more_headers(cursor);
      break;
    case biff::note:
      take_note(cursor);
      break;
    case biff::object:
      take_object(cursor);
      break;
    case biff::object_text:
      take_object_text(cursor);
      break;
    case biff::drawing:
      read_drawing_properties(cursor, flow_);
      break;
    case biff::picture_5:
      flow_.context().count_images(1);
      break;
    case biff::link:
      flow_.line(Orlec::ParseTextType_other, read_link_address(cursor));
      break;
    case biff::series_text:
      take_series_text(cursor);
      break;
    case biff::sheet_name_4:
      cursor.skip(4);
      flow_.line(Orlec::ParseTextType_main, workbook_.text().short_string(cursor));
      break;
    default:
      take_cell(type, cursor);
      break;
  }
}

// A chart repeats what it shows of the sheet's cells: its texts as cells, of which the numbers say
// nothing without the picture.
void BiffSheetReader::take_cell(std::uint16_t type, BiffCursor& cursor) {
  bool const is_label = type == biff::label_2 || type == biff::label || type == biff::rich_label;
  if (in_chart() && !is_label) {
    return;
  }
  switch (type) {
    case biff::integer:
      enter_cell(cursor);
      deliver_cell(workbook_.styles().text(cursor.word(), style_));
      break;
    case biff::number_2:
    case biff::number:
      enter_cell(cursor);
      // A chart's own table keeps the three bytes of attributes that version 2 had.
      if (type == biff::number_2 && workbook_.text().version() > 2) {
        cursor.skip(1);
      }
      deliver_cell(workbook_.styles().text(cursor.floating(), style_));
      break;
    case biff::packed_number:
      enter_cell(cursor);
      deliver_cell(workbook_.styles().text(unpack_number(cursor.double_word()), style_));
      break;
    case biff::packed_numbers:
      take_packed_numbers(cursor);
      break;
    case biff::label_2:
    case biff::label:
    case biff::rich_label:
      take_label(cursor);
      break;
    case biff::shared_label:
      enter_cell(cursor);
      deliver_cell(workbook_.strings().get(cursor.double_word()));
      break;
    case biff::logical_2:
    case biff::logical: {
      enter_cell(cursor);
      int const value = cursor.byte();
      take_logical(value, cursor.byte() != 0);
      break;
    }
    case biff::formula:
    case biff::formula_3:
    case biff::formula_4:
      take_formula(cursor);
      break;
    case biff::formula_text_2:
    case biff::formula_text:
      deliver_cell(workbook_.text().version() == 2 ? workbook_.text().short_string(cursor)
                                                   : workbook_.text().string(cursor));
      break;
    default:
      break;
  }
}

void BiffSheetReader::enter_cell(BiffCursor& cursor) {
  constexpr unsigned format_mask = 0x3f;
  row_ = cursor.word();
  cursor.skip(2);
  if (workbook_.text().version() > 2) {
    style_ = cursor.word();
    return;
  }
  cursor.skip(1);
  style_ = cursor.byte() & format_mask;
  cursor.skip(1);
}

void BiffSheetReader::deliver_cell(std::string_view utf8) {
  flow_.separate(Orlec::ParseTextType_main, row_ == last_row_ && !in_chart() ? '\t' : '\n');
  last_row_ = row_;
  flow_.text(Orlec::ParseTextType_main, utf8);
  flow_.separate(Orlec::ParseTextType_main, '\n');
}

void BiffSheetReader::take_packed_numbers(BiffCursor& cursor) {
  constexpr std::size_t place_size = 4;
  constexpr std::size_t entry_size = 6;
  constexpr std::size_t last_column_size = 2;
  auto const body_size = records_.body().size();
  row_ = cursor.word();
  cursor.skip(2);
  for (auto left = body_size - std::min(body_size, place_size + last_column_size);
       left >= entry_size; left -= entry_size) {
    style_ = cursor.word();
    deliver_cell(workbook_.styles().text(unpack_number(cursor.double_word()), style_));
  }
}

void BiffSheetReader::take_label(BiffCursor& cursor) {
  enter_cell(cursor);
  deliver_cell(workbook_.text().version() == 2 ? workbook_.text().short_string(cursor)
                                               : workbook_.text().string(cursor));
}

void BiffSheetReader::take_logical(int value, bool is_error) {
  deliver_cell(is_error ? error_text(value) : value != 0 ? "TRUE" : "FALSE");
}

// A result that is no number has a mark where a number never has it; a text follows in a record of
// its own.
void BiffSheetReader::take_formula(BiffCursor& cursor) {
  enter_cell(cursor);
  auto const low = cursor.double_word();
  auto const high = cursor.double_word();
  constexpr std::uint32_t no_number = 0xffff;
  if (high >> 16U != no_number) {
    auto const bits = std::uint64_t{high} << 32U | low;
    deliver_cell(workbook_.styles().text(std::bit_cast<double>(bits), style_));
    return;
  }
  constexpr std::uint32_t logical = 1;
  constexpr std::uint32_t error = 2;
  auto const kind = low & 0xffU;
  if (kind == logical || kind == error) {
    take_logical(static_cast<int>(low >> 16U & 0xffU), kind == error);
  }
}

void BiffSheetReader::take_header(BiffCursor& cursor) {
  if (!cursor.at_end()) {
    auto& text = workbook_.text();
    flow_.line(Orlec::ParseTextType_hf,
               header_text(text.version() >= 8 ? text.string(cursor) : text.short_string(cursor)));
  }
}

// Those of even pages and of the first one.
void BiffSheetReader::take_more_headers(BiffCursor& cursor) {
  constexpr std::uint64_t up_to_sizes = 30;
  constexpr std::uint64_t sizes = 8;
  cursor.skip(up_to_sizes + sizes);
  while (!cursor.at_end()) {
    flow_.line(Orlec::ParseTextType_hf, header_text(workbook_.text().string(cursor)));
  }
}

// From version 8 on the text of a note is that of an object.
void BiffSheetReader::take_note(BiffCursor& cursor) {
  constexpr std::uint16_t row_of_more_text = 0xffff;
  constexpr std::size_t head_size = 6;
  auto const size = records_.body().size();
  if (workbook_.text().version() >= 8 || size < head_size) {
    return;
  }
  if (cursor.word() != row_of_more_text) {
    flow_.separate(Orlec::ParseTextType_comment, '\n');
  }
  cursor.skip(4);
  std::string utf8;
  workbook_.text().append(cursor, size - head_size, utf8);
  flow_.text(Orlec::ParseTextType_comment, utf8);
}

void BiffSheetReader::take_object(BiffCursor& cursor) {
  constexpr std::uint16_t common_part = 0x15;
  bool const has_common_part = cursor.word() == common_part;
  cursor.skip(2);
  object_kind_ = has_common_part ? kind_of_object(cursor.word()) : Orlec::ParseTextType_main;
}

void BiffSheetReader::take_object_text(BiffCursor& cursor) {
  constexpr std::uint64_t up_to_length = 10;
  cursor.skip(up_to_length);
  auto const length = cursor.word();
  cursor.skip_record();
  std::string utf8;
  cursor.append_characters(length, false, utf8);
  flow_.line(object_kind_, utf8);
  object_kind_ = Orlec::ParseTextType_main;
}

void BiffSheetReader::take_series_text(BiffCursor& cursor) {
  cursor.skip(2);
  flow_.line(Orlec::ParseTextType_main, workbook_.text().short_string(cursor));
}

}  // namespace morvakit
