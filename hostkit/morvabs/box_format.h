#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/QXPPolicyMorvaClustBox.h"
#include "host/box_file.h"
#include "host/export.h"

namespace morvabs {

/// Limits on what a box file may be and may become. The second kind grows with the file, so that a
/// small file cannot ask for much.
constexpr std::int64_t largest_box_file = std::int64_t{512} << 20;
constexpr std::uint64_t memory_of_any_box = std::uint64_t{64} << 20;
constexpr std::uint64_t most_expansion = 4096;

/// What stands in front of the payload: mark, version, length and checksum.
constexpr std::size_t box_header_size = 32;

/// The content of a box file for the record; nothing for a record that `decode_box` would refuse.
MORVA_EXPORT std::optional<std::string> encode_box(QXPPolicyMorvaClustBox const& box);

/// Fills the record from the content of a box file. 0, or a negative error number with the record
/// untouched: see `QXPPolicyMorvaClustBox::from_file`.
MORVA_EXPORT int decode_box(std::string const& content, QXPPolicyMorvaClustBox& box);

/// A payload with the header that belongs in front of it.
MORVA_EXPORT std::string seal_box(std::string_view payload);

}  // namespace morvabs
