#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace morva {

inline constexpr std::size_t digits_in_group = 32;
inline constexpr std::size_t words_in_group = 2;
inline constexpr std::size_t bits_per_digit = 4;

/// Words that so many digits take: whole groups of two.
constexpr std::size_t packed_size(std::size_t digits) {
  return (digits + digits_in_group - 1) / digits_in_group * words_in_group;
}

/// Writes the values of the digits, by `HFileSimHash::hex2dec`, to `packed_size` words, sixteen to
/// a word in an order of their own, zeros behind the last.
void pack_digits(std::wstring_view digits, std::uint64_t* packed);

/// Writes for each of the rows, which lie one behind the other, the number of bits in which it
/// differs from `row`, and returns the least of these numbers; the greatest one that there is for
/// no rows.
std::size_t differing_bits(std::span<std::uint64_t const> row, std::uint64_t const* rows,
                           std::span<std::size_t> differing);

/// Number of bits that differ between the values of two lists of digits of one length.
std::size_t differing_bits(std::wstring_view a, std::wstring_view b);

/// What `HFileMatchDNA::get_dna_similarity` makes of that number, for texts of so many digits.
constexpr double similarity(std::size_t differing, std::size_t digits) {
  std::size_t const bits = bits_per_digit * digits;
  return static_cast<double>(bits - differing) / static_cast<double>(bits) * 100.0;
}

/// The least number of differing bits with which texts of so many digits have a similarity that is
/// not at or above the threshold; 0 where none has one that is. Found with `similarity` itself,
/// which never rises with that number, so that it is right to the last bit of the threshold.
std::size_t too_many_differing(double threshold, std::size_t digits);

}  // namespace morva
