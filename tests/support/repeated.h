#pragma once

#include <cstddef>
#include <string>

namespace test {

/// The text so many times in a row.
inline std::string repeated(std::string const& text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

}  // namespace test
