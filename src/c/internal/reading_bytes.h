#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "c/internal/reading.h"

namespace morva::c {

/// What a worker found, as bytes that keep every bit of a weight.
std::string pack(Reading const& reading);

/// What was packed. Nothing for bytes that no worker sends that does what it should: lengths that
/// do not fit, statuses and outcomes that are none or do not go together, texts that are no UTF-8,
/// words with a zero, weights that are no finite numbers, fingerprints of other than digits and
/// upper-case letters A to F, or more than was wanted.
std::optional<Reading> unpack(std::string_view bytes, Wants const& wants);

}  // namespace morva::c
