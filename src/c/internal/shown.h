#pragma once

#include <string>

#include "host/HString.h"

namespace morva::c {

/// UTF-8 of a text as it may stand in a message: control characters, and those that turn the
/// direction of what stands behind them, become U+FFFD.
std::string shown(HString const& text);

}  // namespace morva::c
