#include "morvakit/doc/doc_text.h"

#include <algorithm>
#include <utility>

#include "host/utf8.h"
#include "morvakit/doc/doc_drawing.h"
#include "morvakit/doc/doc_equation.h"
#include "morvakit/doc/doc_form_field.h"
#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

// Characters that stand for something else than themselves.
enum Mark : unsigned {
  mark_picture = 0x01,
  mark_cell = 0x07,
  mark_tab = 0x09,
  mark_line = 0x0B,
  mark_page = 0x0C,
  mark_paragraph = 0x0D,
  mark_column = 0x0E,
  mark_field_begin = 0x13,
  mark_field_separator = 0x14,
  mark_field_end = 0x15,
  mark_hyphen = 0x1E,
  first_character = 0x20,
  mark_symbol = 0x28,
};

/// Symbol fonts have their characters here, where they mean nothing as text.
bool is_private_symbol(unsigned unit) {
  return unit >= 0xF000 && unit <= 0xF0FF;
}

unsigned unit_at(std::string_view bytes, std::size_t offset, bool is_wide) {
  return is_wide ? tessarine::little16(bytes, offset) : static_cast<unsigned char>(bytes[offset]);
}

std::string code_page_or_latin(int code_page) {
  auto name = code_page_name(code_page);
  return name.empty() ? "windows-1252" : name;
}

}  // namespace

void WordFields::begin() {
  constexpr std::size_t deepest = 1000;
  if (has_result_.size() < deepest) {
    has_result_.push_back(false);
    ++open_codes_;
    code_.clear();
  }
}

std::string WordFields::close_code() {
  --open_codes_;
  return std::exchange(code_, {});
}

std::string WordFields::separate() {
  if (has_result_.empty() || has_result_.back()) {
    return {};
  }
  has_result_.back() = true;
  return close_code();
}

std::string WordFields::end() {
  if (has_result_.empty()) {
    return {};
  }
  bool const has_result = has_result_.back();
  has_result_.pop_back();
  return has_result ? std::string() : close_code();
}

void WordFields::end_paragraph() {
  if (in_code()) {
    has_result_.clear();
    open_codes_ = 0;
  }
}

void WordFields::add_code(std::string_view utf8) {
  constexpr std::size_t longest = 4096;
  if (code_.size() + utf8.size() <= longest) {
    code_ += utf8;
  }
}

WordText::WordText(std::vector<WordPiece> const& pieces, WordFormatting& formatting,
                   Orlec::Reader const& stream, Orlec::Reader const* data, int code_page,
                   TextFlow& flow)
    : pieces_(pieces),
      formatting_(formatting),
      stream_(stream),
      data_(data),
      flow_(flow),
      bytes_decoder_(code_page_or_latin(code_page)),
      wide_decoder_("UTF-16LE"),
      budget_(4 * stream.GetSize()),
      data_budget_(data == nullptr ? 0 : 2 * data->GetSize()) {}

void WordText::read(std::int64_t begin, std::int64_t end, Orlec::ParseTextType kind) {
  kind_ = kind;
  auto piece =
      std::upper_bound(pieces_.begin(), pieces_.end(), begin,
                       [](std::int64_t at, WordPiece const& other) { return at < other.end; });
  for (; piece != pieces_.end() && piece->begin < end && flow_.context().keep_going(); ++piece) {
    read_piece(*piece, std::max(begin, piece->begin), std::min(end, piece->end));
  }
  fields_ = {};
  end_line('\n');
}

void WordText::read_piece(WordPiece const& piece, std::int64_t begin, std::int64_t end) {
  constexpr std::int64_t chunk_size = 64 << 10;
  std::int64_t const unit_size = piece.is_wide ? 2 : 1;
  if (piece.is_wide != is_wide_) {
    finish_bytes();
    is_wide_ = piece.is_wide;
  }
  is_piece_deleted_ = piece.is_deleted;
  auto offset = piece.offset + (begin - piece.begin) * unit_size;
  auto const behind = piece.offset + (end - piece.begin) * unit_size;
  while (offset < behind && flow_.context().keep_going()) {
    auto const chunk =
        tessarine::read_piece(stream_, offset, std::min(behind - offset, chunk_size));
    budget_ -= static_cast<std::int64_t>(chunk.size());
    if (chunk.size() < static_cast<std::size_t>(unit_size) || budget_ < 0) {
      flow_.context().note(ParseOutcome::damaged,
                           budget_ < 0 ? "the text's pieces overlap" : "the text is cut short");
      return;
    }
    std::string_view left = chunk;
    while (left.size() >= static_cast<std::size_t>(unit_size)) {
      auto const& format = formatting_.characters_at(offset);
      auto const run =
          std::min(formatting_.characters_end() - offset, static_cast<std::int64_t>(left.size()));
      auto const size = std::max(run / unit_size, std::int64_t{1}) * unit_size;
      read_run(left.substr(0, static_cast<std::size_t>(size)), offset, format);
      left.remove_prefix(static_cast<std::size_t>(size));
      offset += size;
    }
    // A half character at the end of what can be read is the end.
    offset += static_cast<std::int64_t>(left.size());
  }
}

void WordText::read_run(std::string_view units, std::int64_t offset,
                        CharacterFormat const& format) {
  std::size_t const unit_size = is_wide_ ? 2 : 1;
  bool const is_deleted = is_piece_deleted_ || format.is_deleted;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < units.size(); at += unit_size) {
    auto const unit = unit_at(units, at, is_wide_);
    bool const is_symbol = unit == mark_symbol && format.symbol != 0;
    if (unit >= first_character && !is_symbol && !is_private_symbol(unit)) {
      continue;
    }
    // The end of a paragraph stays one where it is marked as deleted.
    if (!is_deleted) {
      show(units.substr(begin, at - begin));
    }
    if (!is_deleted || unit == mark_paragraph || unit == mark_cell) {
      finish_bytes();
      special(unit, offset + static_cast<std::int64_t>(at), format);
    }
    begin = at + unit_size;
  }
  if (!is_deleted && begin < units.size()) {
    show(units.substr(begin));
  }
}

void WordText::show(std::string_view bytes) {
  if (bytes.empty()) {
    return;
  }
  is_behind_cell_ = false;
  std::string in_code;
  (is_wide_ ? wide_decoder_ : bytes_decoder_)
      .decode(bytes, false, fields_.in_code() ? in_code : text_);
  fields_.add_code(in_code);
  constexpr std::size_t longest_kept = 64 << 10;
  if (text_.size() > longest_kept) {
    deliver();
  }
}

/// What is left of a character that was cut comes out as damaged.
void WordText::finish_bytes() {
  std::string in_code;
  (is_wide_ ? wide_decoder_ : bytes_decoder_).decode({}, true, fields_.in_code() ? in_code : text_);
}

void WordText::show_text(std::string_view utf8) {
  if (!fields_.in_code()) {
    text_ += utf8;
  }
}

void WordText::deliver() {
  flow_.text(kind_, text_);
  text_.clear();
}

void WordText::end_line(char separator) {
  finish_bytes();
  deliver();
  flow_.separate(kind_, separator);
}

void WordText::special(unsigned unit, std::int64_t offset, CharacterFormat const& format) {
  switch (unit) {
    case mark_picture:
      picture(format);
      break;
    case mark_cell:
      cell_mark(offset);
      return;
    case mark_tab:
      show_text("\t");
      break;
    case mark_line:
    case mark_column:
      show_text("\n");
      break;
    case mark_page:
    case mark_paragraph:
      paragraph_mark(offset);
      break;
    case mark_field_begin:
      fields_.begin();
      break;
    case mark_field_separator:
      field_code(fields_.separate());
      break;
    case mark_field_end:
      field_code(fields_.end());
      break;
    case mark_hyphen:
      show_text("-");
      break;
    default:
      symbol(unit == mark_symbol ? format.symbol : unit);
      break;
  }
  is_behind_cell_ = false;
}

void WordText::symbol(unsigned unit) {
  if (is_private_symbol(unit)) {
    show_text(" ");
  } else if (unit >= first_character) {
    auto const character = static_cast<wchar_t>(unit);
    show_text(morvabs::to_utf8(std::wstring_view(&character, 1)));
  }
}

/// Cells and rows end alike; where the formatting that tells them apart is lost, a row ends behind
/// the end of a cell.
void WordText::cell_mark(std::int64_t offset) {
  auto const paragraph = formatting_.paragraph_at(offset);
  bool const ends_row = paragraph.is_in_table ? paragraph.ends_row : is_behind_cell_;
  fields_.end_paragraph();
  end_line(ends_row ? '\n' : '\t');
  is_behind_cell_ = !ends_row;
}

/// In a table within a table, cells and rows end like paragraphs.
void WordText::paragraph_mark(std::int64_t offset) {
  auto const paragraph = formatting_.paragraph_at(offset);
  fields_.end_paragraph();
  end_line(paragraph.ends_inner_cell && !paragraph.ends_inner_row ? '\t' : '\n');
}

/// Some fields have text in their code: the address of a link, unless it is a place in the
/// document, and what is set by formulas.
void WordText::field_code(std::string const& code) {
  auto const equation = equation_text(code);
  show_text(equation.shown);
  flow_.line(Orlec::ParseTextType_other, equation.phonetic);
  constexpr std::string_view link = "HYPERLINK";
  auto const first = std::min(code.find_first_not_of(' '), code.size());
  auto const open = code.find('"');
  if (open == std::string::npos || code.compare(first, link.size(), link) != 0) {
    return;
  }
  auto const close = code.find('"', open + 1);
  bool const is_place_within = code.find("\\l") < open;
  if (close != std::string::npos && !is_place_within) {
    flow_.line(Orlec::ParseTextType_other,
               std::string_view(code).substr(open + 1, close - open - 1));
  }
}

/// A picture mark stands for a picture, for the data of a form field, or for an object.
void WordText::picture(CharacterFormat const& format) {
  bool const has_data = format.data_offset.has_value() && !format.is_object;
  if (!has_data) {
    return;
  }
  images_ += format.is_data ? 0 : 1;
  if (data_ == nullptr) {
    return;
  }
  auto const offset = *format.data_offset;
  std::int64_t const size = tessarine::little32(tessarine::read_piece(*data_, offset, 4), 0);
  data_budget_ -= std::clamp<std::int64_t>(data_->GetSize() - offset, 0, size);
  if (data_budget_ < 0) {
    flow_.context().note(ParseOutcome::incomplete, "pictures share their data");
    return;
  }
  if (format.is_data) {
    read_form_field(*data_, offset, flow_);
  } else {
    deliver();
    read_inline_picture(*data_, {offset, size}, flow_);
  }
}

}  // namespace morvakit
