#pragma once

#include <cstddef>
#include <optional>
#include <random>
#include <string>

namespace fuzz {

using Random = std::minstd_rand;

/// The bytes as the fuzzer changes them, `most` at most.
std::string mutated(std::string bytes, std::size_t most);
/// A number below `count`, which is not 0.
std::size_t pick(Random& random, std::size_t count);

/// Changes of what lies behind checksums, packing and directories, where changed bytes of the file
/// itself would get no further than those. Each takes an input of its kind and gives one of that
/// kind, `most` bytes long at most; nothing where the input is not of its kind, or the change does
/// not fit.

/// One member of a ZIP is changed, left out or given another name; all others stay as they are.
std::optional<std::string> mutate_zip(std::string const& input, std::size_t most, Random& random);
/// A member of one ZIP takes the place of that of the same name, or of any, in the other.
std::optional<std::string> cross_zips(std::string const& input, std::string const& other,
                                      std::size_t most, Random& random);
/// The bytes of one stream of a compound file are changed where they lie.
std::optional<std::string> mutate_ole(std::string const& input, Random& random);
/// What a gzip, bzip2, XZ or Zstandard file unpacks to is changed, and packed again.
std::optional<std::string> mutate_packed(std::string const& input, std::size_t most);
/// One packed stream of a PDF is changed and packed again.
std::optional<std::string> mutate_pdf(std::string const& input, std::size_t most, Random& random);
/// Any bytes of a TAR or a 7z, with the checksums of the headers set right.
std::optional<std::string> mutate_tar(std::string const& input, std::size_t most);
std::optional<std::string> mutate_seven_zip(std::string const& input, std::size_t most);

}  // namespace fuzz
