#pragma once

#include <string_view>

#include "host/Orlec/ParseFile.h"

namespace morvakit {

/// What unpacking asks of the parse that it is a part of: a `ReadContext`, as virtual functions, so
/// that a component needs no symbol of the library that loads it.
class ParseWatch {
 public:
  ParseWatch() = default;
  ParseWatch(ParseWatch const&) = delete;
  ParseWatch& operator=(ParseWatch const&) = delete;

  /// As those of `ReadContext`.
  virtual bool keep_going() = 0;
  virtual bool end(Orlec::ParseOutcome outcome, std::string_view reason) = 0;

 protected:
  ~ParseWatch() = default;
};

}  // namespace morvakit
