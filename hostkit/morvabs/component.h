#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "host/export.h"

namespace morvabs {

/// The components that there are, by their files. A worker process, which cannot load what it
/// lacks, names one to its parent by its position.
inline constexpr std::array<char const*, 3> component_files{
    "libmorvakit-archive.so", "libmorvakit-html.so", "libmorvakit-pdf.so"};

/// What a component may offer under `prepare_component_symbol`: called when it is loaded, any
/// number of times, it makes ready what reads files, and gives the folder that documents make it
/// read further files in, or null.
using PrepareComponentFunction = char const* (*)();
inline constexpr char const* prepare_component_symbol = "morvakit_prepare";

/// A function of a component: a library that stands beside this one, and is loaded when a document
/// first needs it, because what it links is large, slow to load or under another licence. It stays
/// loaded until the process ends. Null when the component is not installed, or does not offer the
/// function. May be called from any thread; keep the answer.
MORVA_EXPORT void* component_function(char const* file, char const* symbol);

/// Loads a component as the first call of `component_function` does; nothing where that was done,
/// or failed, before.
void load_component(std::size_t position);

/// Whether a component was asked for in this process or one that it was forked from.
bool is_component_settled(std::size_t position);

/// The folders that the loaded components read files in.
std::vector<std::string> component_folders();

/// From now on no component is loaded: one that was never asked for is asked of `ask`, which does
/// not return.
void wait_for_components(void (*ask)(std::size_t position));

}  // namespace morvabs
