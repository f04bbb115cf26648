#pragma once

#include <string>

#include "morvaai.h"

namespace tool {

/// What is said of a worker whose result is not what it should be.
inline constexpr char const* senseless_answer = "the answer of its worker process makes no sense";

/// A problem of a file, taken apart: how reading it ended, as a word, and why. A problem that
/// begins with no such word is "failed".
struct Failure {
  std::string outcome;
  std::string reason;
};
Failure failure_of(std::string const& problem);

/// One JSON object a line for a file that gave nothing: its name, the outcome and the reason.
std::string json_failure(HString const& path, std::string const& outcome,
                         std::string const& reason);

}  // namespace tool
