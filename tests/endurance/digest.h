#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/HString.h"

namespace endurance {

/// A number for everything that was added, in order: FNV-1a, as G. Fowler, L. C. Noll and K.-P. Vo
/// published it.
class Digest {
 public:
  void add(std::uint64_t value) {
    for (int shift = 0; shift < 64; shift += 8) {
      state_ = (state_ ^ ((value >> shift) & 0xFF)) * prime;
    }
  }
  void add(int value) { add(static_cast<std::uint64_t>(value)); }
  void add(double value) { add(std::bit_cast<std::uint64_t>(value)); }
  void add(HString const& text) {
    add(text.size());
    for (wchar_t const character : text_view(text)) {
      add(static_cast<std::uint64_t>(character));
    }
  }
  template <typename Value>
  void add(std::vector<Value> const& values) {
    add(values.size());
    for (Value const& value : values) {
      add(value);
    }
  }

  std::uint64_t value() const { return state_; }

 private:
  static constexpr std::uint64_t prime = 1099511628211U;
  std::uint64_t state_ = 14695981039346656037U;
};

}  // namespace endurance
