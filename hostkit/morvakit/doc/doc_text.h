#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseText.h"
#include "morvabs/text_decoder.h"
#include "morvakit/doc/doc_formatting.h"
#include "morvakit/doc/doc_piece_table.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// The fields that are open at a place of the text: a code up to a separator, then a result.
class WordFields {
 public:
  void begin();
  /// The code of the innermost field is complete; returns it.
  std::string separate();
  std::string end();
  /// A field whose result never comes must not swallow what follows its paragraph.
  void end_paragraph();
  bool in_code() const { return open_codes_ > 0; }
  void add_code(std::string_view utf8);

 private:
  std::string close_code();

  /// From the outermost in: whether each one's result has begun.
  std::vector<bool> has_result_;
  std::size_t open_codes_ = 0;
  std::string code_;
};

/// Turns the characters of a document's stories into text.
class WordText {
 public:
  /// `data`, the stream of what picture marks stand for, may be null. All is kept by reference.
  WordText(std::vector<WordPiece> const& pieces, WordFormatting& formatting,
           Orlec::Reader const& stream, Orlec::Reader const* data, int code_page, TextFlow& flow);

  /// Delivers the characters from `begin` up to `end`, as far as there are any.
  void read(std::int64_t begin, std::int64_t end, Orlec::ParseTextType kind);
  /// Pictures that stand in the text read so far.
  std::int64_t images() const { return images_; }

 private:
  void read_piece(WordPiece const& piece, std::int64_t begin, std::int64_t end);
  void read_run(std::string_view units, std::int64_t offset, CharacterFormat const& format);
  void show(std::string_view bytes);
  void show_text(std::string_view utf8);
  void finish_bytes();
  void deliver();
  void end_line(char separator);
  void special(unsigned unit, std::int64_t offset, CharacterFormat const& format);
  void cell_mark(std::int64_t offset);
  void paragraph_mark(std::int64_t offset);
  void field_code(std::string const& code);
  void symbol(unsigned unit);
  void picture(CharacterFormat const& format);

  std::vector<WordPiece> const& pieces_;
  WordFormatting& formatting_;
  Orlec::Reader const& stream_;
  Orlec::Reader const* data_;
  TextFlow& flow_;
  morvabs::TextDecoder bytes_decoder_;
  morvabs::TextDecoder wide_decoder_;
  bool is_wide_ = false;
  bool is_piece_deleted_ = false;
  bool is_behind_cell_ = false;
  Orlec::ParseTextType kind_ = Orlec::ParseTextType_main;
  WordFields fields_;
  std::string text_;
  std::int64_t images_ = 0;
  /// Bytes of text that may still be read: pieces that overlap must not make a small file long.
  std::int64_t budget_;
  /// The same for what picture marks stand for.
  std::int64_t data_budget_;
};

}  // namespace morvakit
