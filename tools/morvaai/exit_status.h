#pragma once

namespace tool {

/// Exit status of the program.
enum Status : int { all_done = 0, some_failed = 1, wrong_use = 2 };

}  // namespace tool
