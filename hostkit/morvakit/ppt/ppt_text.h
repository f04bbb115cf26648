#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "morvakit/ppt/ppt_records.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// Where a text stands in the stream. It is read when it is delivered.
struct PptText {
  PptRecord record;
  /// Places of the characters that stand for a number or a date, in ascending order as the records
  /// behind the text have them.
  std::vector<std::uint32_t> fields;
};

/// Puts texts together from the records that they are made of.
class PptTextCollector {
 public:
  PptTextCollector(PptStream& stream, std::vector<PptText>& texts)
      : stream_(stream), texts_(texts) {}

  /// Takes a record; one that has nothing to do with text has no effect.
  void take(PptRecord const& record);

 private:
  PptStream& stream_;
  std::vector<PptText>& texts_;
};

/// Delivers a text, its paragraphs on lines of their own, without its fields. Returns a number that
/// is the same for the same text.
std::size_t deliver_text(PptStream& stream, PptText const& text, Orlec::ParseTextType kind,
                         TextFlow& flow);
/// That number alone.
std::size_t text_digest(PptStream& stream, PptText const& text);

/// A string of UTF-16 up to its first NUL, control characters left out.
std::string short_text(std::string_view utf16);

}  // namespace morvakit
