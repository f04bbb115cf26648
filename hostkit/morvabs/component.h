#pragma once

#include "host/export.h"

namespace morvabs {

/// A function of a component: a library that stands beside this one, and is loaded when a document
/// first needs it, because what it links is large, slow to load or under another licence. It stays
/// loaded until the process ends. Null when the component is not installed, or does not offer the
/// function. May be called from any thread; keep the answer.
MORVA_EXPORT void* component_function(char const* file, char const* symbol);

}  // namespace morvabs
