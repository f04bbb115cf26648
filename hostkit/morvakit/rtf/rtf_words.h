#pragma once

#include <string_view>

namespace morvakit {

/// What a control word of RTF is to a reader of text. Most are about looks and are `unknown`.
enum class RtfRole {
  unknown,
  document,  ///< the group is the whole document, and nothing behind it counts
  // Destinations: what becomes of the rest of the group.
  left_out,
  kept,       ///< read where it stands, though readers that do not know it would leave it out
  suspended,  ///< left out but for the groups in it that are `resumed`
  resumed,  ///< belongs to what stands around the suspended group; `value`: 1 on a line of its own
  beside,   ///< text of the kind `value`
  endnote,  ///< the footnote around it is an endnote
  fonts,
  information,
  property,  ///< named `label`, within the information
  date,      ///< the same, put together of `date_part`
  property_name,
  property_value,
  field_code,
  shape_name,
  shape_value,
  picture,
  object_data,
  // Text: `value` is a character, or what separates.
  character,
  separator,
  unicode,
  // Encodings: of the document, of fonts, and of the text behind.
  code_page,  ///< `value`
  stated_code_page,
  default_font,
  font,
  font_charset,
  font_code_page,
  far_east,  ///< `value`: 1 where the text behind is in the Far-East font
  associated_font,
  unicode_skip,
  plain,
  // Others
  deleted,
  page_count,
  date_part,  ///< `value`: the place in the date, 0 for the year
};

struct RtfWord {
  RtfRole role = RtfRole::unknown;
  int value = 0;
  /// Name that the property is delivered under.
  std::string_view label = {};
};

/// What is known of a control word; of role `unknown` where nothing is.
RtfWord find_rtf_word(std::string_view name);

}  // namespace morvakit
