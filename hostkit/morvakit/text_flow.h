#pragma once

#include <array>
#include <string_view>

#include "morvakit/read_context.h"

namespace morvakit {

/// Delivers text with separators that stand only between pieces of text, never behind the last: of
/// several in a row the latest counts, so that the end of the paragraph in a cell gives way to the
/// end of the cell.
class TextFlow {
 public:
  explicit TextFlow(ReadContext& context) : context_(context) {}

  ReadContext& context() { return context_; }

  void text(Orlec::ParseTextType type, std::string_view utf8);
  void separate(Orlec::ParseTextType type, char separator) {
    pending_[static_cast<std::size_t>(type)] = separator;
  }
  /// A line of its own.
  void line(Orlec::ParseTextType type, std::string_view utf8);

 private:
  ReadContext& context_;
  std::array<char, Orlec::ParseTextType_other + 1> pending_{};
};

}  // namespace morvakit
