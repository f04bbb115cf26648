#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "morvakit/read_context.h"

namespace morvakit {

/// The texts that a workbook's cells refer to by number: all of them in one piece of memory, with
/// four bytes for each beside it. What goes over the bound is left out and noted.
class SharedStrings {
 public:
  explicit SharedStrings(ReadContext& context) : context_(context) {}

  /// `bytes`: a guess at the size of all texts.
  void expect(std::int64_t bytes);
  /// Begins the next text.
  void next();
  /// Appends to the text that was begun last.
  void append(std::string_view utf8);
  /// The text of that number; empty where there is none.
  std::string_view get(std::uint64_t number) const;

 private:
  bool has_room(std::size_t bytes);

  ReadContext& context_;
  std::string texts_;
  std::vector<std::uint32_t> starts_;
  bool full_ = false;
};

}  // namespace morvakit
