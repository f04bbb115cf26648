#pragma once

#include <string>

#include "morvakit/office/open_package.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// Reads what stands beside the cells of a sheet, in parts of its own: drawings with their charts
/// and diagrams, comments of both sorts, controls, the addresses behind links. Parts that were
/// read before are left out.
void read_beside_sheet(OpenPackage& package, std::string const& part, TextFlow& flow);

}  // namespace morvakit
