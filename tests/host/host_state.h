#pragma once

#include <map>
#include <string>

namespace test {

/// What belongs to a process as a whole, in words, by name: what a signal does, where files are
/// looked for, how numbers are rounded, and so on. Two states are compared with each other.
using HostState = std::map<std::string, std::string>;

HostState host_state();

}  // namespace test
