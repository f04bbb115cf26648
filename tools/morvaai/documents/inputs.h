#pragma once

#include <string>
#include <vector>

#include "morvaai.h"

namespace tool {

/// The regular files in a folder, in code-point order of their names; with `is_recursive`, what a
/// subfolder holds stands behind its name.
std::vector<HString> files_in(HString const& folder, bool is_recursive);

/// The files that the arguments of a command name, in order: a folder stands for the regular files
/// below it, "-" for the paths that standard input lists, one a line. A path that does not exist
/// stays in the list, for its own error message.
std::vector<HString> expand_inputs(std::vector<std::string> const& arguments);

}  // namespace tool
