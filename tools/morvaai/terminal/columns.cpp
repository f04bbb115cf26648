#include "terminal/columns.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "morvaai.h"

#include "terminal/character_width.h"

namespace tool {

namespace {

constexpr std::string_view ellipsis = "…";
constexpr std::size_t gap = 2;
constexpr std::size_t narrowest_fit = 16;

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// The characters of a text, and the columns of each.
struct Measured {
  explicit Measured(std::string_view text) : characters(morvabs::from_utf8(text)) {
    constexpr wchar_t as_pictogram = L'\xFE0F';
    widths.reserve(characters.size());
    for (wchar_t const c : characters) {
      if (c == as_pictogram && !widths.empty() &&
          has_emoji_form(static_cast<char32_t>(characters[widths.size() - 1]))) {
        widths.back() = 2;
      }
      widths.push_back(static_cast<std::uint8_t>(character_width(static_cast<char32_t>(c))));
    }
  }
  std::size_t total() const {
    std::size_t sum = 0;
    for (std::uint8_t const width : widths) {
      sum += width;
    }
    return sum;
  }
  // How many characters of the beginning fit in so many columns, with the marks on them.
  std::size_t head(std::size_t columns) const {
    std::size_t at = 0;
    while (at < widths.size() && widths[at] <= columns) {
      columns -= widths[at++];
    }
    return at;
  }
  // Where the longest end begins that fits.
  std::size_t tail(std::size_t columns) const {
    std::size_t at = widths.size();
    std::size_t begin = at;
    while (at > 0 && widths[at - 1] <= columns) {
      columns -= widths[--at];
      begin = widths[at] > 0 ? at : begin;
    }
    return begin;
  }
  std::string part(std::size_t begin, std::size_t end) const {
    return morvabs::to_utf8(std::wstring_view(characters).substr(begin, end - begin));
  }

  std::wstring characters;
  std::vector<std::uint8_t> widths;
};

// Columns before the point by which cells are lined up, and from there on.
struct Extent {
  std::size_t before = 0;
  std::size_t rest = 0;
  std::size_t total() const { return before + rest; }
};

Extent extent_of(std::string_view cell, Align align) {
  std::size_t const all = columns_of(cell);
  std::size_t const before = align == Align::decimal
                                 ? columns_of(cell.substr(0, std::min(cell.find('.'), cell.size())))
                                 : all;
  return {before, all - before};
}

using Row = std::vector<Table::Cell>;

std::vector<Extent> extents_of(std::vector<Row> const& rows,
                               std::vector<Table::Column> const& columns,
                               std::vector<std::string> const& titles) {
  std::vector<Extent> extents(columns.size());
  for (Row const& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      Extent const extent = extent_of(row[i].text, columns[i].align);
      extents[i].before = std::max(extents[i].before, extent.before);
      extents[i].rest = std::max(extents[i].rest, extent.rest);
    }
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    std::size_t const title = i < titles.size() ? columns_of(titles[i]) : 0;
    std::size_t const least = std::max(columns[i].least, title);
    extents[i].before += least - std::min(least, extents[i].total());
  }
  return extents;
}

// A row in the line, in columns of these widths.
class RowText {
 public:
  explicit RowText(std::size_t indent) : blanks_(indent) {}

  void add(Table::Cell const& cell, Extent const& own, Extent const& column, Align align) {
    std::size_t const before = align == Align::left ? 0 : column.before - own.before;
    blanks_ += before;
    // Blanks are owed until something stands behind them.
    if (!cell.text.empty()) {
      text_.append(std::exchange(blanks_, 0), ' ').append(styled(cell.role, cell.text));
    }
    blanks_ += column.total() - before - own.total() + gap;
  }
  std::string line() && { return std::move(text_.append("\n")); }

 private:
  std::size_t blanks_;
  std::string text_;
};

}  // namespace

std::size_t columns_of(std::string_view text) {
  return is_ascii(text) ? text.size() : Measured(text).total();
}

std::string cut_end(std::string_view text, std::size_t columns) {
  if (columns_of(text) <= columns) {
    return std::string(text);
  }
  if (columns == 0) {
    return {};
  }
  Measured const measured(text);
  return measured.part(0, measured.head(columns - 1)).append(ellipsis);
}

std::string cut_middle(std::string_view text, std::size_t columns) {
  if (columns_of(text) <= columns) {
    return std::string(text);
  }
  if (columns == 0) {
    return {};
  }
  Measured const measured(text);
  std::size_t const before = (columns - 1) / 3;
  return measured.part(0, measured.head(before))
      .append(ellipsis)
      .append(measured.part(measured.tail(columns - 1 - before), measured.characters.size()));
}

Table::Table(std::vector<Column> columns, std::size_t indent)
    : columns_(std::move(columns)), indent_(indent) {}

void Table::set_titles(std::vector<std::string> titles) {
  titles_ = std::move(titles);
}

void Table::add(std::vector<Cell> cells) {
  rows_.push_back(std::move(cells));
}

void Table::fit(std::size_t column, std::optional<std::size_t> width) {
  if (width) {
    fit_ = {column, *width};
  }
}

void Table::cut_to_fit() {
  if (!fit_) {
    return;
  }
  std::vector<Extent> const extents = extents_of(rows_, columns_, titles_);
  std::size_t others = indent_ + gap * (columns_.size() - 1);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    others += i == fit_->column ? 0 : extents[i].total();
  }
  std::size_t const left = std::max(narrowest_fit, fit_->width - std::min(fit_->width, others));
  for (Row& row : rows_) {
    if (fit_->column < row.size()) {
      row[fit_->column].text = cut_middle(row[fit_->column].text, left);
    }
  }
}

std::string Table::text() {
  cut_to_fit();
  std::vector<Extent> const extents = extents_of(rows_, columns_, titles_);
  std::string text;
  if (!titles_.empty()) {
    RowText line(indent_);
    for (std::size_t i = 0; i < titles_.size(); ++i) {
      // A title of numbers ends where they do.
      Extent const column{extents[i].total(), 0};
      line.add({titles_[i], Role::faint}, {columns_of(titles_[i]), 0}, column, columns_[i].align);
    }
    text += std::move(line).line();
  }
  for (Row const& row : rows_) {
    RowText line(indent_);
    for (std::size_t i = 0; i < row.size(); ++i) {
      Align const align = columns_[i].align;
      line.add(row[i], extent_of(row[i].text, align), extents[i], align);
    }
    text += std::move(line).line();
  }
  return text;
}

}  // namespace tool
