#pragma once

#include <string_view>

#include "host/HString.h"

namespace morva::c {

/// Whether a text can be a fingerprint: digits and upper-case letters A to F, or nothing.
inline bool is_dna(std::string_view text) {
  return text.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

/// A fingerprint that a caller gives; a failure where it is none. `name` is what the caller knows
/// it by.
HString checked_dna(char const* text, char const* name);

}  // namespace morva::c
