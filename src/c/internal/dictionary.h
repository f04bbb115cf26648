#pragma once

#include "host/HString.h"

namespace morva::c {

/// Maps the dictionary that the locator finds, and gives its directory. A failure where there is
/// none.
HString load_dictionary();

}  // namespace morva::c
