#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "host/Orlec/IFile.h"

namespace morvakit {

/// The texts that a Word document consists of, in their order. Positions of characters count
/// through all of them.
enum class WordStory : std::uint8_t {
  body,
  footnotes,
  headers,
  macros,
  comments,
  endnotes,
  text_boxes,
  header_text_boxes,
};
inline constexpr std::size_t word_story_count = 8;

/// Tables of a Word document by their place in the header's list of them.
enum class WordTable : std::size_t {
  header_stories = 11,
  character_pages = 12,
  paragraph_pages = 13,
  fonts = 15,
  pieces = 33,
  drawings = 50,
};

/// The bytes of something in a stream.
struct WordExtent {
  std::int64_t offset = 0;
  std::int64_t size = 0;
};

/// What the header of a Word document (97 to 2003, or 6 and 95) says about where everything is.
class WordHeader {
 public:
  /// Reads the header at an offset of the document's main stream; nothing where there is none.
  static std::optional<WordHeader> read(Orlec::Reader const& stream, std::int64_t offset);

  /// Word 6 and 95: tables stand in the main stream, and text is in a code page.
  bool is_old() const { return is_old_; }
  char const* table_stream() const;
  /// Characters of a story.
  std::int64_t length(WordStory story) const { return lengths_[static_cast<std::size_t>(story)]; }
  /// Characters in front of a story.
  std::int64_t begin(WordStory story) const;
  std::int64_t total_length() const;
  /// Where the text stands if no table of pieces says otherwise.
  WordExtent text() const { return text_; }
  WordExtent table(WordTable table) const;
  /// The code page of 8-bit text: of an old document, that of its language, or where this says
  /// nothing, of the character set of its first font. `tables` may be null.
  int code_page(Orlec::Reader const* tables) const;
  /// The text is in UTF-16 although the document is old.
  bool has_wide_text() const { return has_wide_text_; }
  /// Where the header of the building blocks begins that the document, a template, also holds; 0
  /// without them.
  std::int64_t building_blocks() const { return building_blocks_; }

 private:
  void read_new();
  void read_old();

  std::string bytes_;
  bool is_old_ = false;
  bool uses_second_table_ = false;
  bool has_wide_text_ = false;
  int code_page_ = 1252;
  std::int64_t building_blocks_ = 0;
  WordExtent text_;
  std::array<std::int64_t, word_story_count> lengths_{};
  std::size_t tables_offset_ = 0;
  std::size_t tables_count_ = 0;
};

}  // namespace morvakit
