#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "host/export.h"

namespace tessarine {

/// Up to `size` bytes at `offset`; shorter at the end of the file, empty on failure.
MORVA_EXPORT std::string read_piece(Orlec::Reader const& reader, std::int64_t offset,
                                    std::int64_t size);

/// Little-endian integers of a piece; 0 where the piece is too short.
MORVA_EXPORT std::uint16_t little16(std::string_view bytes, std::size_t offset);
MORVA_EXPORT std::uint32_t little32(std::string_view bytes, std::size_t offset);
MORVA_EXPORT std::uint64_t little64(std::string_view bytes, std::size_t offset);

/// The text with the ASCII letters in lower case.
MORVA_EXPORT std::string ascii_lower(std::string_view text);

/// Suffix of the file's name in ASCII lower case without the point; empty without one.
MORVA_EXPORT std::string name_suffix(Orlec::Reader const& reader);

}  // namespace tessarine
