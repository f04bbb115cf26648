#pragma once

#include <string>

#include <sys/types.h>

#include "host/export.h"
#include "morvabs/file_access.h"

namespace morvabs {

/// A file that is on its way to a name of its own: ".morva-" and 32 hexadecimal digits in the
/// directory that it will stay in. It is locked (flock) from before its first byte until `lock`
/// is closed, or its process ends; one that nobody has locked was left by a killed process.
struct TemporaryFile {
  /// Open for writing; it may be closed before the file has its last name.
  FileDescriptor descriptor;
  /// Holds the lock.
  FileDescriptor lock;
  std::string path;
  /// The system's error number where the file could not be made, else 0.
  int error = 0;
};

/// Makes an empty file of a new name with these permissions, less those of the umask. `directory`
/// is empty or ends in a slash.
///
/// Before that it removes what killed processes left in the directory: regular files of such a name
/// and of this user that nobody has locked. To do so it reads the directory, each one at most once
/// a minute; beyond a thousand directories in that time it begins anew. On file systems without
/// locks files are made without, and none are removed; nor are they where locks may be those of one
/// machine (`sees_all_locks`).
MORVA_EXPORT TemporaryFile make_temporary_file(std::string const& directory, mode_t mode);

}  // namespace morvabs
