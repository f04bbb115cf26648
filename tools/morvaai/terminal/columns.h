#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "terminal/style.h"

namespace tool {

/// Columns that a text takes on a terminal. The text is UTF-8 in one line, without control
/// characters: what `printable` gives. Invalid bytes count as U+FFFD, one column each.
std::size_t columns_of(std::string_view text);

/// The text if it takes no more than that many columns; else its beginning, with an ellipsis, which
/// take that many or one less. Characters are not parted from the marks on them.
std::string cut_end(std::string_view text, std::size_t columns);
/// The same with the ellipsis within the text, which keeps twice as much of its end as of its
/// beginning: of a path the end says more.
std::string cut_middle(std::string_view text, std::size_t columns);

/// How the cells of a column stand below each other. Numbers that stand by their decimal point have
/// digits, or nothing, before and behind it.
enum class Align { left, right, decimal };

/// Rows of cells that stand in line, whatever characters are in them.
class Table {
 public:
  struct Cell {
    Cell(std::string shown, Role meaning = Role::plain)  // NOLINT(*-explicit-*): most are plain
        : text(std::move(shown)), role(meaning) {}
    std::string text;
    Role role;
  };

  struct Column {
    Column(Align how, std::size_t at_least = 0)  // NOLINT(*-explicit-*): most are that only
        : align(how), least(at_least) {}
    Align align;
    /// Columns of the terminal that it takes even if the cells need less.
    std::size_t least;
  };

  /// `indent` columns stand before each row; two between cells.
  explicit Table(std::vector<Column> columns, std::size_t indent = 0);

  /// A line above the rows that says what stands in each column.
  void set_titles(std::vector<std::string> titles);
  /// A row, of as many cells as there are columns or less.
  void add(std::vector<Cell> cells);

  /// Rows are to take no more than `width` columns, where that is known: longer cells of `column`
  /// are cut in the middle, to no less than 16 columns.
  void fit(std::size_t column, std::optional<std::size_t> width);

  /// Titles and rows with their line ends, and no blanks at the end of a line; styled as `show`
  /// takes it.
  std::string text();

 private:
  struct Fit {
    std::size_t column;
    std::size_t width;
  };
  void cut_to_fit();

  std::vector<Column> columns_;
  std::size_t indent_;
  std::vector<std::string> titles_;
  std::optional<Fit> fit_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace tool
