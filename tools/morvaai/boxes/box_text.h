#pragma once

#include <string>

#include "morvaai.h"

namespace tool {

/// The type of a box as a word.
std::string box_type_name(int type);

/// Prints the classes of a box with their parameters and heaviest words; false when that fails.
bool write_box_text(QXPPolicyMorvaClustBox const& box);

}  // namespace tool
