#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace morvabs {

/// A folder that a process shut in by Landlock may still reach, with all that is below it.
struct OpenFolder {
  enum class Use {
    read,
    /// Files and folders are made, written and removed too.
    work,
  };
  std::string path;
  Use use;
};

/// The version of Landlock that the kernel has, 0 for none.
int landlock_version();

/// Keeps the calling process from all files but those below the folders, from TCP, and from the
/// signals and abstract sockets of other processes, each as far as the version goes. A folder that
/// is not there stays out. The process has no new privileges, and one thread. False when the kernel
/// refuses.
bool close_landlock(int version, std::span<OpenFolder const> folders);

}  // namespace morvabs
