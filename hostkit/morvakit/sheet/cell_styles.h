#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "morvakit/read_context.h"
#include "morvakit/sheet/number_format.h"

namespace morvakit {

/// What the cell styles of a workbook make of the numbers in its cells.
class CellStyles {
 public:
  explicit CellStyles(ReadContext& context) : context_(context) {}

  /// Whether days are counted from 1904 in place of 1900.
  void count_from_1904(bool from_1904) { from_1904_ = from_1904; }
  /// A number format of the workbook's own, or in place of a built-in one.
  void add_format(int number, std::string_view code);
  /// The next style; its format is one that was added before, or a built-in one.
  void add_style(int format);

  /// A number as a cell of that style shows it, by `format_number`; by the plain format where there
  /// is no such style.
  std::string text(std::string_view stored, std::uint32_t style) const;
  std::string text(double value, std::uint32_t style) const;

 private:
  NumberKind kind(std::uint32_t style) const;

  ReadContext& context_;
  bool from_1904_ = false;
  std::unordered_map<int, NumberKind> formats_;
  std::vector<NumberKind> styles_;
};

}  // namespace morvakit
