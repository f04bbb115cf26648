#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/export.h"

namespace morvabs {

/// An encoding found by looking at the bytes of a text.
struct DetectedEncoding {
  /// Name that `TextDecoder` takes, as "UTF-8", "GB18030"; empty for bytes that are no text.
  std::string name;
  /// Length of the byte-order mark in front.
  std::size_t mark_length = 0;
};

/// Looks at the beginning of a text (the whole text or its first MiB is a good sample): a
/// byte-order mark decides; else valid UTF-8 (a sequence cut at the end of the sample is no fault);
/// else UTF-16 and UTF-32 by their zero bytes; else detection among GB18030, Big5, Shift-JIS,
/// EUC-JP, EUC-KR, KOI8-R and the Windows and ISO Latin, Cyrillic and Greek sets. GB2312 and GBK
/// are taken as GB18030. Bytes with the control characters of a binary file are no text.
MORVA_EXPORT DetectedEncoding detect_encoding(std::string_view sample);

/// Turns text of a given encoding into UTF-8, piece by piece. A malformed sequence becomes U+FFFD.
/// Makes no use of a byte-order mark: the caller skips it (a mark left in front comes out as
/// U+FEFF).
class MORVA_EXPORT TextDecoder {
 public:
  /// Any name that ICU knows, in any spelling of it. Names that are used loosely in the wild stand
  /// for the wider set: GB2312 and GBK for GB18030, ISO-8859-1 and US-ASCII for windows-1252,
  /// Shift_JIS for windows-31j, EUC-KR for windows-949, Big5 for Big5-HKSCS.
  explicit TextDecoder(std::string_view encoding);
  ~TextDecoder();
  TextDecoder(TextDecoder&&) noexcept;
  TextDecoder& operator=(TextDecoder&&) noexcept;

  /// False when the name is unknown; then the bytes are decoded as windows-1252.
  bool is_known() const;
  /// Appends the decoded bytes to `utf8`. A sequence that is cut at the end of `bytes` is kept for
  /// the next call, unless `last` is set.
  void decode(std::string_view bytes, bool last, std::string& utf8);

 private:
  struct Converter;
  std::unique_ptr<Converter> converter_;
};

/// A whole text of unknown encoding as UTF-8, without its byte-order mark. A text that is valid
/// UTF-8 from beginning to end is taken as that; only where a quarter of it are control characters
/// it may turn out to be UTF-16 or UTF-32 instead.
MORVA_EXPORT std::string decode_text(std::string_view bytes);

/// The same as wide text, with no copy in between where the text is UTF-8.
MORVA_EXPORT std::wstring decode_wide_text(std::string_view bytes);

}  // namespace morvabs
