#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace tool {

/// What is wrong with a command line that could not be read, in one line that says what to do: what
/// was not expected, with what may have been meant, or what is missing or has a wrong value, and
/// whose help tells more.
std::string explain_wrong_use(CLI::ParseError const& error, CLI::App const& program);

}  // namespace tool
