#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// What is known of one file: its type, its text by kind and its counts. A plain record; each part
/// of the system fills the fields it has to do with.
struct HTessarineResult {
  /// The path of the file, as it was given.
  HString str_path;
  /// Usual suffix of the recognised type, lower case without the point; empty for an unknown type.
  HString str_suffix;
  /// The content cannot be read without a password.
  bool b_encrypt = false;
  /// Body text in reading order.
  HString str_main;
  /// Headers and footers.
  HString str_hf;
  /// Comments and annotations.
  HString str_comment;
  /// Speaker notes.
  HString str_remark;
  /// Footnotes.
  HString str_fn;
  /// Endnotes.
  HString str_en;
  /// Form fields and other controls.
  HString str_ctrl;
  /// Document properties, one "name: value" a line.
  HString str_property;
  /// Characters covered by the file's words.
  std::int32_t i_word = 0;
  /// Lines, pages, pictures and embedded files, as `Orlec::ParseCounts` has them.
  std::int32_t i_line = 0;
  /// Pages, slides or sheets.
  std::int32_t i_page = 0;
  /// Pictures in the document itself.
  std::int32_t i_img = 0;
  /// Files embedded in it, at all depths.
  std::int32_t i_embed = 0;
  /// Belongs to the host: never filled here.
  std::vector<std::int64_t> vt_embed;
};

/// Recognises files by their content, and fills the record from it; a file's name only tells apart
/// kinds of plain text.
class MORVA_EXPORT HTessarine {
 public:
  /// Fills `str_path`, `str_suffix` and `b_encrypt` of the record and leaves its other fields.
  /// False, with only `str_path` set, when the file cannot be read or its type is unknown.
  static bool recognize(HString const& path, HTessarineResult& result);

  /// Recognises a file and reads it, within the bounds of `Orlec::Global`: sets `str_path`,
  /// `str_suffix` (empty for an unknown type), `b_encrypt`, the texts (at most the characters that
  /// `ParseLimits::i_memory_chars` keeps), and `i_line`, `i_page`, `i_img` and `i_embed`, of which
  /// those that the format does not tell become 0; a count beyond 32 bits becomes the largest
  /// number. `i_word` and `vt_embed` are left. Returns what `Orlec::ParseFile::InitFile` would;
  /// with false, the texts hold what could be read.
  static bool read(HString const& path, HTessarineResult& result);
};
