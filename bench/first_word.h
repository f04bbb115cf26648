#pragma once

#include <cstddef>
#include <string>

/// What first_word measures: another implementation for each candidate.
extern char const* const candidate_name;

/// Number of tokens of a text, of a process that has done nothing yet.
std::size_t count_first_tokens(std::string const& text);
