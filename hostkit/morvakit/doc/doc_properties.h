#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace morvakit {

/// One property of characters or paragraphs, under the number that Word 97 and later have for it.
struct WordProperty {
  std::uint16_t number = 0;
  std::string_view operand;

  bool is_on() const { return !operand.empty() && (operand[0] & 1) != 0; }
};

// Those that decide about text.
inline constexpr std::uint16_t word_deleted = 0x0800;
inline constexpr std::uint16_t word_picture_location = 0x6A03;
inline constexpr std::uint16_t word_is_data = 0x0806;
inline constexpr std::uint16_t word_symbol = 0x6A09;
inline constexpr std::uint16_t word_is_object = 0x080A;
inline constexpr std::uint16_t word_in_table = 0x2416;
inline constexpr std::uint16_t word_row_end = 0x2417;
inline constexpr std::uint16_t word_inner_cell_end = 0x244B;
inline constexpr std::uint16_t word_inner_row_end = 0x244C;
inline constexpr std::uint16_t word_large_list = 0x6646;
inline constexpr std::uint16_t word_older_large_list = 0x6645;

/// Takes the first property off a list of them. Nothing at its end, or where it cannot be followed
/// any further. `is_old` for the shorter form of Word 6 and 95; properties of it that nobody asks
/// for have number 0.
std::optional<WordProperty> take_property(std::string_view& list, bool is_old);

}  // namespace morvakit
