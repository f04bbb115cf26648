#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "host/worker_pool.h"
#include "morvabs/sandbox.h"

namespace morvabs {

/// What the workers of one run have in common.
struct Tasks {
  WorkerPool::Work const& work;
  /// The path of each task's file, where tasks have files; nothing for one that no file can have.
  std::vector<std::optional<std::string>> paths;
  WorkerLimits limits;
};

/// The life of a worker process, just forked by `parent`: shuts itself in, and does the tasks that
/// come over the socket until there are no more. Nothing of the parent's stack is ever unwound.
[[noreturn]] void serve(int socket, pid_t parent, Tasks const& tasks,
                        Sandbox const& sandbox) noexcept;

}  // namespace morvabs
