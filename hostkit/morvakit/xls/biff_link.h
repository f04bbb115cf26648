#pragma once

#include <string>

#include "morvakit/xls/biff_stream.h"

namespace morvakit {

/// The address outside of the workbook that the link in the present record leads to; empty where it
/// leads to a place in the workbook.
std::string read_link_address(BiffCursor& cursor);

}  // namespace morvakit
