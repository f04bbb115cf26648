#pragma once

#include "host/HString.h"
#include "host/HTessarineResult.h"

namespace morva {

/// A file's record as text for a person, a label before each field; the path is left out.
HString get_result_text(HTessarineResult const& result);
/// Writes that text and a line feed to the console.
void print_result(HTessarineResult const& result);

}  // namespace morva
