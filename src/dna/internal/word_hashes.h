#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace morva {

/// A word's MD5, most significant bits first: ordered as its text of hexadecimal digits is.
using WordHash = std::array<std::uint64_t, 2>;

/// Replaces the hashes, one for each of the words, by what `HString::get_md5_std_format` gives for
/// them: sixteen words at a time in the lanes of vectors (MD5: RFC 1321, 1992). Words of more than
/// 55 bytes, which take more than one block, are hashed one by one.
void hash_words(std::span<std::wstring_view const> words, std::span<WordHash> hashes);

}  // namespace morva
