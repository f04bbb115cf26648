#include "morvakit/doc/doc_properties.h"

#include <algorithm>
#include <array>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;

constexpr std::size_t counted = 255;

/// Bytes of the operand of a list of tab stops that is too long for its length to say so.
std::size_t tab_stops_size(std::string_view list) {
  auto const deleted = static_cast<unsigned char>(list.size() > 1 ? list[1] : 0);
  auto const added_at = 2 + std::size_t{deleted} * 4;
  auto const added = static_cast<unsigned char>(list.size() > added_at ? list[added_at] : 0);
  return added_at + 1 + std::size_t{added} * 3;
}

/// Operand size of the properties that have a size of their own, by the top bits of their number.
std::size_t operand_size(std::uint16_t number, std::string_view list) {
  constexpr std::array<std::size_t, 8> sizes{1, 1, 2, 4, 2, 2, counted, 3};
  constexpr std::uint16_t table_definition = 0xD608;
  constexpr std::uint16_t tab_stops = 0xC615;
  auto const size = sizes[number >> 13U];
  if (size != counted) {
    return size;
  }
  if (number == table_definition) {
    return std::size_t{little16(list, 0)} + 1;
  }
  auto const length = static_cast<unsigned char>(list.empty() ? 0 : list[0]);
  return number == tab_stops && length == counted ? tab_stops_size(list) : std::size_t{length} + 1;
}

struct OldProperty {
  unsigned char number;
  std::uint16_t new_number;
};

constexpr std::array old_properties{
    OldProperty{24, word_in_table},  OldProperty{25, word_row_end},
    OldProperty{65, word_deleted},   OldProperty{68, word_picture_location},
    OldProperty{71, word_is_data},   OldProperty{74, word_symbol},
    OldProperty{75, word_is_object},
};

/// Operand size of a property of Word 6; nothing for one that is not known.
std::optional<std::size_t> old_operand_size(unsigned char number, std::string_view list) {
  constexpr unsigned char first_of_paragraphs = 2;
  constexpr std::array<std::size_t, 24> of_paragraphs{2, counted, 1,       1, 1, 1,       1, 1,
                                                      1, 1,       counted, 1, 1, counted, 2, 2,
                                                      2, 2,       4,       2, 2, counted, 1, 1};
  constexpr unsigned char first_of_characters = 65;
  constexpr std::array<std::size_t, 43> of_characters{
      1, 1,       1,       counted, 2, 4, 1, 2, 3,       counted, 1,       1,       1, 1, 1,
      2, counted, counted, 0,       1, 1, 1, 1, 1,       1,       1,       1,       1, 2, 1,
      3, 2,       2,       1,       1, 1, 1, 1, counted, 1,       counted, counted, 2};
  std::size_t size = 0;
  if (number >= first_of_paragraphs && number < first_of_paragraphs + of_paragraphs.size()) {
    size = of_paragraphs[number - std::size_t{first_of_paragraphs}];
  } else if (number >= first_of_characters && number < first_of_characters + of_characters.size()) {
    size = of_characters[number - std::size_t{first_of_characters}];
  } else {
    return std::nullopt;
  }
  if (size == counted) {
    auto const length = static_cast<unsigned char>(list.empty() ? 0 : list[0]);
    constexpr unsigned char tab_stops = 23;
    size =
        number == tab_stops && length == counted ? tab_stops_size(list) : std::size_t{length} + 1;
  }
  return size;
}

std::optional<WordProperty> take_old_property(std::string_view& list) {
  if (list.empty()) {
    return std::nullopt;
  }
  auto const number = static_cast<unsigned char>(list[0]);
  list.remove_prefix(1);
  auto const size = old_operand_size(number, list);
  if (!size.has_value() || *size > list.size()) {
    return std::nullopt;
  }
  auto const* const known =
      std::find_if(old_properties.begin(), old_properties.end(),
                   [number](OldProperty const& property) { return property.number == number; });
  WordProperty const property{known == old_properties.end() ? std::uint16_t{0} : known->new_number,
                              list.substr(0, *size)};
  list.remove_prefix(*size);
  return property;
}

}  // namespace

std::optional<WordProperty> take_property(std::string_view& list, bool is_old) {
  if (is_old) {
    return take_old_property(list);
  }
  if (list.size() < 2) {
    return std::nullopt;
  }
  auto const number = little16(list, 0);
  list.remove_prefix(2);
  auto const size = operand_size(number, list);
  if (size > list.size()) {
    return std::nullopt;
  }
  WordProperty const property{number, list.substr(0, size)};
  list.remove_prefix(size);
  return property;
}

}  // namespace morvakit
