#pragma once

#include <cstdint>
#include <string>

#include "morvakit/text_flow.h"
#include "morvakit/xls/biff_stream.h"
#include "morvakit/xls/biff_workbook.h"

namespace morvakit {

/// Reads one sheet of a workbook's stream: its cells, and all that stands on and around them.
class BiffSheetReader {
 public:
  BiffSheetReader(BiffStream& records, BiffWorkbook& workbook, TextFlow& flow)
      : records_(records), workbook_(workbook), flow_(flow) {}

  /// Reads from the record that begins the sheet, which is the stream's next, to the one that ends
  /// it, or to the position `end`. Where the sheet is the `whole` of a workbook, as it was before
  /// version 5, it says itself what else the globals say.
  void read(std::int64_t end, bool whole);

 private:
  void take(std::uint16_t type);
  void take_cell(std::uint16_t type, BiffCursor& cursor);
  void take_packed_numbers(BiffCursor& cursor);
  void take_formula(BiffCursor& cursor);
  void take_label(BiffCursor& cursor);
  void take_logical(int value, bool is_error);
  void take_header(BiffCursor& cursor);
  void take_more_headers(BiffCursor& cursor);
  void take_note(BiffCursor& cursor);
  void take_object(BiffCursor& cursor);
  void take_object_text(BiffCursor& cursor);
  void take_series_text(BiffCursor& cursor);

  /// Takes the place of a cell from the front of its record; what is delivered next, stands there.
  void enter_cell(BiffCursor& cursor);
  void deliver_cell(std::string_view utf8);
  bool in_chart() const { return chart_depth_ > 0; }

  BiffStream& records_;
  BiffWorkbook& workbook_;
  TextFlow& flow_;
  int depth_ = 0;
  /// Depth of the chart that is read; 0 outside of one.
  int chart_depth_ = 0;
  int last_row_ = -1;
  int row_ = 0;
  std::uint32_t style_ = 0;
  Orlec::ParseTextType object_kind_ = Orlec::ParseTextType_main;
};

}  // namespace morvakit
