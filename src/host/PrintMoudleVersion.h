#pragma once

#include "host/export.h"

/// Writes one line with the library's name, version and build stamp to standard error; the name
/// takes 25 columns. Returns the number of bytes written, negative on failure.
extern "C" MORVA_EXPORT int PrintMoudleVersion();
