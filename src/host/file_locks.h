#pragma once

#include "host/export.h"

namespace morvabs {

/// Whether a lock (flock) that a process has on a file or directory is seen by all who can reach
/// it. Network file systems and those of another process may keep locks to one machine: there
/// something that nobody seems to have locked may be in use on another. Unknown is no.
MORVA_EXPORT bool sees_all_locks(int descriptor);

/// The same by the number that a file system has in `statfs`.
MORVA_EXPORT bool type_sees_all_locks(unsigned long type);

}  // namespace morvabs
