#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The numbers of the records that the readers of Excel 97 to 2003 workbooks and of their
/// forerunners know. Where a later version gave a record another number, both stand here.
namespace biff {

// Any part of the stream.
inline constexpr std::uint16_t begin_2 = 0x0009;
inline constexpr std::uint16_t begin_3 = 0x0209;
inline constexpr std::uint16_t begin_4 = 0x0409;
inline constexpr std::uint16_t begin = 0x0809;
inline constexpr std::uint16_t end = 0x000a;
inline constexpr std::uint16_t continuation = 0x003c;
inline constexpr std::uint16_t drawing = 0x00ec;

// The workbook.
inline constexpr std::uint16_t file_password = 0x002f;
inline constexpr std::uint16_t code_page = 0x0042;
inline constexpr std::uint16_t date_mode = 0x0022;
inline constexpr std::uint16_t format_2 = 0x001e;
inline constexpr std::uint16_t format = 0x041e;
inline constexpr std::uint16_t style_3 = 0x0243;
inline constexpr std::uint16_t style_4 = 0x0443;
inline constexpr std::uint16_t style = 0x00e0;
inline constexpr std::uint16_t bound_sheet = 0x0085;
inline constexpr std::uint16_t shared_strings = 0x00fc;
inline constexpr std::uint16_t drawing_group = 0x00eb;

// Cells.
inline constexpr std::uint16_t integer = 0x0002;
inline constexpr std::uint16_t number_2 = 0x0003;
inline constexpr std::uint16_t number = 0x0203;
inline constexpr std::uint16_t packed_number = 0x027e;
inline constexpr std::uint16_t packed_numbers = 0x00bd;
inline constexpr std::uint16_t label_2 = 0x0004;
inline constexpr std::uint16_t label = 0x0204;
inline constexpr std::uint16_t rich_label = 0x00d6;
inline constexpr std::uint16_t shared_label = 0x00fd;
inline constexpr std::uint16_t logical_2 = 0x0005;
inline constexpr std::uint16_t logical = 0x0205;
inline constexpr std::uint16_t formula = 0x0006;
inline constexpr std::uint16_t formula_3 = 0x0206;
inline constexpr std::uint16_t formula_4 = 0x0406;
inline constexpr std::uint16_t formula_text_2 = 0x0007;
inline constexpr std::uint16_t formula_text = 0x0207;

// What else a sheet or a chart holds.
inline constexpr std::uint16_t sheet_name_4 = 0x008f;
inline constexpr std::uint16_t header = 0x0014;
inline constexpr std::uint16_t footer = 0x0015;
inline constexpr std::uint16_t more_headers = 0x089c;
inline constexpr std::uint16_t note = 0x001c;
inline constexpr std::uint16_t object = 0x005d;
inline constexpr std::uint16_t object_text = 0x01b6;
inline constexpr std::uint16_t picture_5 = 0x007f;
inline constexpr std::uint16_t link = 0x01b8;
inline constexpr std::uint16_t series_text = 0x100d;

/// Whether the record begins a workbook, a sheet or a chart.
constexpr bool is_begin(std::uint16_t type) {
  return type == begin || type == begin_4 || type == begin_3 || type == begin_2;
}

}  // namespace biff

/// The records of a workbook's stream, one after the other, from a buffer that holds little more
/// than one of them.
class BiffStream {
 public:
  /// The stream has to outlive it.
  BiffStream(Orlec::Reader const& stream, ReadContext& context)
      : stream_(stream), context_(context) {}

  ReadContext& context() { return context_; }

  /// Where the next record begins.
  std::int64_t position() const { return next_; }
  /// Whether there is no further record.
  bool at_end() const { return next_ >= stream_.GetSize(); }
  /// Goes on at a position, which may be anywhere.
  void seek(std::int64_t position);

  /// Moves on to the next record. False at the end of the stream and where reading is to stop. Of a
  /// record that the stream ends within, the body is what there is of it; that is noted as damage.
  bool next();
  /// Moves on to the next record if it continues the present one.
  bool next_continuation();
  /// Notes the damage of a stream that ends before what it holds does.
  void note_cut();

  std::uint16_t type() const { return type_; }
  /// Valid until the next move.
  std::string_view body() const { return body_; }

 private:
  std::string_view bytes(std::int64_t position, std::size_t size);
  void fill(std::int64_t position, std::size_t size);

  Orlec::Reader const& stream_;
  ReadContext& context_;
  std::string buffer_;
  std::int64_t buffer_begin_ = 0;
  std::int64_t next_ = 0;
  std::uint16_t type_ = 0;
  std::string_view body_;
};

/// Takes values out of a record, one behind the other, and goes on in the records that continue it.
/// What is taken behind the end is 0 or empty.
class BiffCursor {
 public:
  /// Begins with the body of the stream's present record.
  explicit BiffCursor(BiffStream& records) : records_(records), rest_(records.body()) {}

  /// Whether nothing is left, in the records behind neither.
  bool at_end();
  /// Whether something was to be taken behind the end.
  bool is_short() const { return short_; }

  std::uint8_t byte();
  std::uint16_t word();
  std::uint32_t double_word();
  double floating();
  void skip(std::uint64_t count);
  /// Leaves out what is left of the present record's body.
  void skip_record() { rest_ = {}; }

  /// Appends text of `count` bytes as they stand.
  void append_bytes(std::size_t count, std::string& bytes);
  /// Appends `count` characters of UTF-16 or, unless `wide`, of low bytes of it, as UTF-8. Where
  /// the text goes over into a continuing record, that says anew how wide its characters are.
  void append_characters(std::size_t count, bool wide, std::string& utf8);

 private:
  bool refill();
  std::string_view take(std::size_t most);

  BiffStream& records_;
  std::string_view rest_;
  std::string wide_;
  bool short_ = false;
};

}  // namespace morvakit
