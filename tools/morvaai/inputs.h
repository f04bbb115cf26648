#pragma once

#include <string>
#include <vector>

#include "morvaai.h"

namespace tool {

/// The files that the arguments of a command name, in order: a folder stands for the regular files
/// below it, "-" for the paths that standard input lists, one a line. A path that does not exist
/// stays in the list, for its own error message.
std::vector<HString> expand_inputs(std::vector<std::string> const& arguments);

}  // namespace tool
