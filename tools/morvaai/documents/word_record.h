#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "morvaai.h"

namespace tool {

/// What a worker found in a file, on its way to the program.
struct WordRecord {
  std::vector<HString> words;
  std::vector<int> counts;
  std::vector<double> weights;
  HString dna;
};

/// The record as bytes that keep every bit of a weight.
std::string pack(WordRecord const& record);

/// The record again. Nothing for bytes that are none: lengths that do not fit, texts that are no
/// UTF-8 or hold a zero, a count below 0, a weight that is no finite number, a fingerprint of other
/// than hexadecimal digits.
std::optional<WordRecord> unpack_record(std::string_view packed);

}  // namespace tool
