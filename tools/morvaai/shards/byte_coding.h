#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

/// Appends a whole number in `size` bytes, the lowest first, whatever the machine.
inline void put_number(std::string& bytes, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes += static_cast<char>(number >> (8U * i));
  }
}

/// Appends a whole number in as many bytes as it needs, seven bits in each, the lowest first, and
/// the highest bit set in all but the last.
inline void put_varint(std::string& bytes, std::uint64_t number) {
  for (; number >= 0x80U; number >>= 7U) {
    bytes += static_cast<char>(number | 0x80U);
  }
  bytes += static_cast<char>(number);
}

/// Takes one thing after the other off bytes that may lie. After the first thing that is not there
/// the reader is good no more, and all that is taken is 0 or empty. The bytes must live as long.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  /// Whether all that was taken so far was there.
  bool is_good() const { return is_good_; }
  /// Whether nothing is left to take; so it is as well once the reader is good no more.
  bool is_at_end() const { return rest_.empty(); }
  /// How many bytes are left; 0 once the reader is good no more.
  std::size_t left() const { return rest_.size(); }

  /// So many bytes; they lie in those that the reader was made with.
  std::string_view take_bytes(std::uint64_t size) {
    if (!is_good_ || size > rest_.size()) {
      return fail();
    }
    std::string_view const taken = rest_.substr(0, static_cast<std::size_t>(size));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  /// As `put_number` has written it, in up to 8 bytes.
  std::uint64_t take_number(std::size_t size) {
    std::string_view const taken = take_bytes(size);
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < taken.size(); ++i) {
      number |= std::uint64_t{static_cast<unsigned char>(taken[i])} << (8U * i);
    }
    return number;
  }

  /// As `put_varint` has written it; more than 64 bits are no number.
  std::uint64_t take_varint() {
    constexpr unsigned int last_shift = 63;
    std::uint64_t number = 0;
    for (unsigned int shift = 0; shift <= last_shift; shift += 7) {
      std::uint64_t const byte = take_number(1);
      if (shift == last_shift && byte > 1) {
        break;
      }
      number |= (byte & 0x7FU) << shift;
      if (byte < 0x80U) {
        return number;
      }
    }
    fail();
    return 0;
  }

 private:
  std::string_view fail() {
    is_good_ = false;
    rest_ = {};
    return {};
  }

  std::string_view rest_;
  bool is_good_ = true;
};

}  // namespace tool
