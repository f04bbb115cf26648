#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "host/HString.h"
#include "host/utf8.h"

namespace morvabs {

/// Adds a number to bytes as this machine has it, every bit: for another process of the same
/// program, as the result of a task of `WorkerPool`, and not for files.
template <typename Number>
void pack_number(std::string& bytes, Number number) {
  static_assert(std::is_arithmetic_v<Number>);
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof number);
}

/// Adds a text, and its length before it.
inline void pack_text(std::string& bytes, std::string_view text) {
  pack_number(bytes, static_cast<std::uint64_t>(text.size()));
  bytes += text;
}

/// The same as UTF-8.
inline void pack_text(std::string& bytes, HString const& text) {
  pack_text(bytes, to_utf8(text_view(text)));
}

/// Takes one thing after the other off packed bytes, which may lie. Over their end, and after the
/// first thing that cannot be, all that is taken is empty, and the unpacker good no more: whether
/// it is need not be asked before the end. The bytes must live as long.
class Unpacker {
 public:
  /// Begins with the first of the bytes.
  explicit Unpacker(std::string_view bytes) : rest_(bytes) {}

  /// Whether all that was taken so far was there and could be.
  bool is_good() const { return is_good_; }
  /// Whether nothing is left to take.
  bool is_at_end() const { return rest_.empty(); }
  /// Says what has to be so of what was taken; else the unpacker is good no more.
  void expect(bool is_so) { is_good_ = is_good_ && is_so; }

  /// A number of this type; any bits of one are taken.
  template <typename Number>
  Number take_number() {
    static_assert(std::is_arithmetic_v<Number> && !std::is_same_v<Number, bool>);
    Number number{};
    std::string_view const bytes = take_bytes(sizeof number);
    if (is_good_) {
      std::memcpy(&number, bytes.data(), sizeof number);
    }
    return number;
  }

  /// A text, which is well-formed UTF-8; it lies in the bytes.
  std::string_view take_utf8() {
    std::string_view const text = take_bytes(take_number<std::uint64_t>());
    expect(is_utf8(text));
    return is_good_ ? text : std::string_view();
  }

  /// The same as a string, in which no character is zero.
  HString take_text() {
    std::wstring const text = from_utf8(take_utf8());
    expect(text.find(L'\0') == std::wstring::npos);
    return is_good_ ? HString(text.data(), static_cast<int>(text.size())) : HString();
  }

 private:
  std::string_view take_bytes(std::uint64_t size) {
    expect(size <= rest_.size());
    if (!is_good_) {
      return {};
    }
    std::string_view const taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
  bool is_good_ = true;
};

}  // namespace morvabs
