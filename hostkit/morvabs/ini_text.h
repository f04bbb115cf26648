#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/HIniFileHelper.h"

namespace morvabs {

/// What an INI file holds.
struct IniDocument {
  std::vector<HIniSection> sections;
  /// The comment lines behind the last key.
  HString trailing_comment;
};

/// Reads INI text in UTF-8. Keys in front of the first section make a section without a name;
/// sections of one name are one section; lines that are neither section, key nor comment are passed
/// over.
///
/// Names and values are percent-encoded where INI cannot hold them: "%" and two hexadecimal digits
/// for an ASCII character, "%{" digits "}" for any other value, "%{}" for a name that is empty.
IniDocument parse_ini(std::string_view utf8);

/// The text for a document, which `parse_ini` reads back as it was.
std::string format_ini(IniDocument const& document);

}  // namespace morvabs
