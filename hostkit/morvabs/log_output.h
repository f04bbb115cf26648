#pragma once

#include <string_view>

namespace morvabs {

/// Writes one line to the log file that MORVA_LOG_FILE names, or to standard error where the
/// variable is not set or the file cannot be opened. The place is chosen at the first line. The
/// text is UTF-8 without control characters.
void write_log_line(int level, std::string_view tag, int line, std::string_view text);

/// Chooses the place now, and again; a file is made if missing. For a process that was forked, has
/// lost its descriptors and will not be able to open files.
void reopen_log();

}  // namespace morvabs
