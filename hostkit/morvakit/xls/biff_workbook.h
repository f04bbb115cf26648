#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "morvabs/text_decoder.h"
#include "morvakit/office/shared_strings.h"
#include "morvakit/sheet/cell_styles.h"
#include "morvakit/xls/biff_stream.h"

namespace morvakit {

/// What a part of a workbook's stream is, by the record that begins it.
enum class BiffPart : std::uint16_t {
  globals = 0x0005,
  sheet = 0x0010,
  chart = 0x0020,
};

/// How a workbook writes its strings: in UTF-16 or its low bytes from version 8 on, before in a
/// code page.
class BiffText {
 public:
  /// Version of the format: 2, 3, 4, 5 or 8.
  int version() const { return version_; }
  void set_version(int version) { version_ = version; }
  void set_code_page(int number);

  /// Takes `count` characters and appends them as UTF-8; reading aids and formatting are skipped.
  void append(BiffCursor& cursor, std::size_t count, std::string& utf8);
  /// The string behind a count of its characters, in one byte or two.
  std::string short_string(BiffCursor& cursor);
  std::string string(BiffCursor& cursor);

 private:
  int version_ = 8;
  morvabs::TextDecoder decoder_{"windows-1252"};
  std::string bytes_;
};

/// What a workbook says about all its sheets.
class BiffWorkbook {
 public:
  struct Sheet {
    std::string name;
    /// Where in the stream the sheet begins.
    std::int64_t position = 0;
  };
  /// What a sheet costs beside its name: itself, its place in three lists and in a set.
  static constexpr std::size_t kept_per_sheet = sizeof(Sheet) + 3 * sizeof(std::int64_t) + 48;

  explicit BiffWorkbook(ReadContext& context)
      : context_(context), styles_(context), strings_(context) {}

  /// Takes the version from the present record, which begins the workbook.
  void begin(BiffStream& records);
  /// Takes the present record; one that is not about the workbook has no effect. Ends the context
  /// where the workbook needs a password.
  void take(BiffStream& records);

  BiffText& text() { return text_; }
  CellStyles const& styles() const { return styles_; }
  SharedStrings const& strings() const { return strings_; }
  /// In the order in which a user sees them.
  std::vector<Sheet>& sheets() { return sheets_; }

 private:
  void take_format(BiffCursor& cursor);
  void take_style(BiffStream& records);
  void take_sheet(BiffCursor& cursor);
  void take_strings(BiffCursor& cursor);

  ReadContext& context_;
  BiffText text_;
  CellStyles styles_;
  SharedStrings strings_;
  std::vector<Sheet> sheets_;
  int format_count_ = 0;
};

}  // namespace morvakit
