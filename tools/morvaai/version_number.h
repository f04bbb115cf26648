#pragma once

#include <string>

namespace tool {

/// The version of the program, as "3.2306.4.13.1".
std::string version_number();

}  // namespace tool
