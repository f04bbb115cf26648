#include "dna/internal/digits.h"

#include <array>
#include <bit>
#include <cstring>

// On x86-64 each loop is compiled for several widths, of which the loader picks one; not under the
// sanitizers, which start up after the loader has picked.

namespace morva {

namespace {

using Characters [[gnu::vector_size(64)]] = std::uint32_t;
using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
constexpr std::uint32_t zero = U'0';
constexpr std::uint32_t first_letter = U'A';

using Padded = std::array<wchar_t, digits_in_word>;

static_assert(sizeof(wchar_t) == sizeof(std::uint32_t));
static_assert(sizeof(Characters) == sizeof(Padded));

// Inverts the bits of `values` that are set in the digits'.
inline void toggle(wchar_t const* digits, Characters& values) {
  Characters text;
  std::memcpy(&text, digits, sizeof text);
  Characters const number = text - zero;
  Characters const letter = text - first_letter;
  Characters const letter_value = letter < 6 ? letter + 10 : Characters{};
  values ^= number < 10 ? number : letter_value;
}

inline std::size_t bit_count(std::uint64_t word) {
  return static_cast<std::size_t>(std::popcount(word));
}

inline std::uint64_t packed(Characters const& values) {
  Bytes const bytes = __builtin_convertvector(values, Bytes);
  std::uint64_t halves[2];
  std::memcpy(halves, &bytes, sizeof halves);
  return halves[0] | halves[1] << bits_per_digit;
}

inline std::uint64_t packed(wchar_t const* digits) {
  Characters values{};
  toggle(digits, values);
  return packed(values);
}

inline std::size_t differing(wchar_t const* a, wchar_t const* b) {
  Characters values{};
  toggle(a, values);
  toggle(b, values);
  return bit_count(packed(values));
}

inline Padded padded(std::wstring_view digits) {
  Padded copy{};
  digits.copy(copy.data(), copy.size());
  return copy;
}

}  // namespace

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void pack_digits(std::wstring_view digits, std::uint64_t* words) {
  while (digits.size() >= digits_in_word) {
    *words++ = packed(digits.data());
    digits.remove_prefix(digits_in_word);
  }
  if (!digits.empty()) {
    *words = packed(padded(digits).data());
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
std::size_t
differing_bits(std::wstring_view a, std::wstring_view b) {
  std::size_t sum = 0;
  while (a.size() >= digits_in_word) {
    sum += differing(a.data(), b.data());
    a.remove_prefix(digits_in_word);
    b.remove_prefix(digits_in_word);
  }
  if (!a.empty()) {
    sum += differing(padded(a).data(), padded(b).data());
  }
  return sum;
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("popcnt", "default")]]
#endif
void differing_bits(std::span<std::uint64_t const> row, std::uint64_t const* rows,
                    std::span<std::size_t> differing) {
  for (std::size_t& sum : differing) {
    std::size_t bits = 0;
    for (std::uint64_t const word : row) {
      bits += bit_count(word ^ *rows++);
    }
    sum = bits;
  }
}

}  // namespace morva
