#include "dna/internal/digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

// On x86-64 each loop is compiled for several widths, of which the loader picks one; not under the
// sanitizers, which start up after the loader has picked. What the loops are made of has to become
// part of them for that.

namespace morva {

namespace {

using Characters [[gnu::vector_size(64)]] = std::uint32_t;
using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
using Words = std::array<std::uint64_t, words_in_group>;

constexpr std::size_t characters = sizeof(Characters) / sizeof(wchar_t);
constexpr std::uint32_t zero = U'0';
constexpr std::uint32_t first_letter = U'A';

static_assert(sizeof(wchar_t) == sizeof(std::uint32_t));
static_assert(digits_in_group == 2 * characters && sizeof(Words) == sizeof(Bytes));

// Inverts the bits of `values` that are set in the digits'.
[[gnu::always_inline]] inline void toggle(wchar_t const* digits, Characters& values) {
  Characters text;
  std::memcpy(&text, digits, sizeof text);
  Characters const number = text - zero;
  Characters const letter = text - first_letter;
  Characters const letter_value = letter < 6 ? letter + 10 : Characters{};
  values ^= number < 10 ? number : letter_value;
}

[[gnu::always_inline]] inline Words packed(Characters const& first, Characters const& second) {
  Bytes const bytes = __builtin_convertvector(first | second << bits_per_digit, Bytes);
  Words words;
  std::memcpy(words.data(), &bytes, sizeof words);
  return words;
}

inline std::size_t bit_count(std::uint64_t word) {
  return static_cast<std::size_t>(std::popcount(word));
}

// Of one group.
[[gnu::always_inline]] inline void pack(wchar_t const* digits, std::uint64_t* words) {
  Characters first{};
  Characters second{};
  toggle(digits, first);
  toggle(digits + characters, second);
  Words const group = packed(first, second);
  std::memcpy(words, group.data(), sizeof group);
}

[[gnu::always_inline]] inline std::size_t differing(wchar_t const* a, wchar_t const* b) {
  Characters first{};
  Characters second{};
  toggle(a, first);
  toggle(b, first);
  toggle(a + characters, second);
  toggle(b + characters, second);
  Words const group = packed(first, second);
  return bit_count(group[0]) + bit_count(group[1]);
}

// What is left behind the last whole group, filled up. A function of its own, as its stack frame
// would be the larger part of the work for short texts.
using Padded = std::array<wchar_t, digits_in_group>;

Padded padded(std::wstring_view digits) {
  Padded copy{};
  digits.copy(copy.data(), copy.size());
  return copy;
}

[[gnu::noinline]] void pack_rest(std::wstring_view digits, std::uint64_t* words) {
  Padded const group = padded(digits);
  pack_digits({group.data(), group.size()}, words);
}

[[gnu::noinline]] std::size_t differing_in_rest(std::wstring_view a, std::wstring_view b) {
  Padded const first = padded(a);
  Padded const second = padded(b);
  return differing_bits({first.data(), first.size()}, {second.data(), second.size()});
}

}  // namespace

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void pack_digits(std::wstring_view digits, std::uint64_t* words) {
  for (; digits.size() >= digits_in_group; digits.remove_prefix(digits_in_group)) {
    pack(digits.data(), words);
    words += words_in_group;
  }
  if (!digits.empty()) {
    pack_rest(digits, words);
  }
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
std::size_t
differing_bits(std::wstring_view a, std::wstring_view b) {
  std::size_t sum = 0;
  while (a.size() >= digits_in_group) {
    sum += differing(a.data(), b.data());
    a.remove_prefix(digits_in_group);
    b.remove_prefix(digits_in_group);
  }
  if (!a.empty()) {
    sum += differing_in_rest(a, b);
  }
  return sum;
}

std::size_t too_many_differing(double threshold, std::size_t digits) {
  std::size_t low = 0;
  std::size_t high = bits_per_digit * digits + 1;
  while (low < high) {
    std::size_t const middle = low + (high - low) / 2;
    if (similarity(middle, digits) >= threshold) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("popcnt", "default")]]
#endif
std::size_t
differing_bits(std::span<std::uint64_t const> row, std::uint64_t const* rows,
               std::span<std::size_t> differing) {
  std::size_t least = std::numeric_limits<std::size_t>::max();
  if (row.size() == words_in_group) {
    std::uint64_t const first = row[0];
    std::uint64_t const second = row[1];
    for (std::size_t i = 0; i < differing.size(); ++i) {
      differing[i] = bit_count(first ^ rows[2 * i]) + bit_count(second ^ rows[2 * i + 1]);
      least = std::min(least, differing[i]);
    }
    return least;
  }
  for (std::size_t& sum : differing) {
    std::size_t bits = 0;
    for (std::uint64_t const word : row) {
      bits += bit_count(word ^ *rows++);
    }
    sum = bits;
    least = std::min(least, bits);
  }
  return least;
}

}  // namespace morva
