#pragma once

#include <string_view>

namespace tool {

/// The page of reports without its data, as the build made it of tools/report; empty where the
/// build left it out.
std::string_view report_template();

}  // namespace tool
