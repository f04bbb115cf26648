#pragma once

#include <cstddef>
#include <functional>

namespace test {

/// Runs the work on a thread with a stack of that size; the number of bytes of it that were used,
/// what every thread needs for itself included. A stack that overflows ends the process.
std::size_t stack_used(std::size_t size, std::function<void()> const& work);

}  // namespace test
