#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/HIniFileHelper.h"
#include "host/export.h"

namespace morvabs {

/// What an INI file holds.
struct IniDocument {
  std::vector<HIniSection> sections;
  /// The comment lines behind the last key.
  HString trailing_comment;
};

/// Limits on what an INI file may be: the time that it takes to look names up, and the memory for
/// the entries, go with these.
constexpr std::int64_t largest_ini_file = std::int64_t{8} << 20;
constexpr std::size_t most_ini_entries = 100'000;  ///< sections and keys
constexpr std::size_t longest_ini_section = 4096;  ///< bytes of the line that names it

/// The text of an INI file, which is UTF-8 where it can be that, and else what it looks like.
MORVA_EXPORT std::string decode_ini(std::string_view bytes);

/// Whether a text of at most `largest_ini_file` bytes keeps within the other limits.
MORVA_EXPORT bool is_within_ini_limits(std::string_view utf8);

/// Reads INI text in UTF-8 that is within the limits. Keys in front of the first section make a
/// section without a name; sections of one name are one section, and of values of one name the last
/// one counts, while the comments of all are kept in order; lines that are neither section, key nor
/// comment are passed over.
///
/// Names and values are percent-encoded where INI cannot hold them: "%" and two hexadecimal digits
/// for an ASCII character, "%{" digits "}" for any other value, "%{}" for a name that is empty.
MORVA_EXPORT IniDocument parse_ini(std::string_view utf8);

/// The text for a document, which `parse_ini` reads back as it was.
MORVA_EXPORT std::string format_ini(IniDocument const& document);

}  // namespace morvabs
