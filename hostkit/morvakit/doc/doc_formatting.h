#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/doc/doc_header.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// What the formatting of a run of characters says about its text.
struct CharacterFormat {
  /// Left out by the revision marks.
  bool is_deleted = false;
  /// The picture mark stands for a form field's data, or for an embedded object.
  bool is_data = false;
  bool is_object = false;
  /// Where the data of a picture mark begin in the stream of data.
  std::optional<std::int64_t> data_offset;
  /// The character of a symbol font that stands in place of the run's; 0 for none.
  char16_t symbol = 0;
};

/// What the formatting of a paragraph says about the mark at its end.
struct ParagraphFormat {
  /// Whether it is in a table; the mark of a cell that is not has lost its formatting.
  bool is_in_table = false;
  bool ends_row = false;
  bool ends_inner_cell = false;
  bool ends_inner_row = false;
};

/// Finds lists of properties by the place in the main stream of what they are about. They lie in
/// pages of the stream, of which one is held at a time.
class FormattingPages {
 public:
  /// How a page refers to its lists.
  enum class Form { characters, paragraphs };
  /// A list and the extent in the stream that it goes for; `end` is behind the place asked for.
  struct Run {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    std::string_view properties;
  };

  FormattingPages(WordHeader const& header, Orlec::Reader const& stream,
                  Orlec::Reader const* tables, Form form, ReadContext& context);

  /// The list that goes for an offset of the main stream; valid until the next call.
  Run const& find(std::int64_t offset);

 private:
  Run look_up(std::int64_t offset);
  Run look_up_in_page(std::int64_t offset, std::int64_t end) const;
  std::string_view character_list(std::size_t index, std::size_t count) const;
  std::string_view paragraph_list(std::size_t index, std::size_t count) const;
  std::int64_t place(std::size_t index) const;
  std::int64_t page_number(std::size_t index) const;

  Orlec::Reader const& stream_;
  Form form_;
  bool is_old_;
  /// Where each page's extent begins, and behind them the pages' numbers.
  std::string directory_;
  std::size_t count_ = 0;
  std::string page_;
  std::int64_t page_number_ = -1;
  Run run_;
};

/// The formatting of a document as far as it decides about text.
class WordFormatting {
 public:
  /// `tables` and `data`, the stream of data, may be null.
  WordFormatting(WordHeader const& header, Orlec::Reader const& stream, Orlec::Reader const* tables,
                 Orlec::Reader const* data, ReadContext& context);

  /// The format of the character at an offset of the main stream. It goes up to `characters_end`,
  /// which is behind the offset.
  CharacterFormat const& characters_at(std::int64_t offset);
  std::int64_t characters_end() const { return characters_end_; }
  /// The format of the paragraph that the character at an offset belongs to.
  ParagraphFormat paragraph_at(std::int64_t offset);

 private:
  void apply(std::string_view properties, ParagraphFormat& format) const;
  std::string large_list(std::string_view operand) const;

  bool is_old_;
  Orlec::Reader const* data_;
  FormattingPages character_pages_;
  FormattingPages paragraph_pages_;
  CharacterFormat characters_;
  std::int64_t characters_begin_ = 0;
  std::int64_t characters_end_ = 0;
};

}  // namespace morvakit
