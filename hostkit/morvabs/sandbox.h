#pragma once

#include <optional>
#include <string>
#include <vector>

#include <signal.h>

#include "host/worker_pool.h"
#include "morvabs/landlock.h"
#include "morvabs/system_call_filter.h"

namespace morvabs {

/// What a worker process is shut in by. It is put together once, in the process that forks.
class Sandbox {
 public:
  explicit Sandbox(WorkerPool const& pool);

  /// Shuts the calling process in, which was just forked: it loses its descriptors but `socket` and
  /// those that are kept, its signal handlers, its privileges, and what the limits and the layers
  /// take. A call that no reader makes comes to `on_refused_call`, a handler of SIGSYS. False, with
  /// errno set, when one of the layers that the kernel has is not in force.
  bool close(int socket, void (*on_refused_call)(int, siginfo_t*, void*)) const;

 private:
  std::vector<int> kept_descriptors(int socket) const;

  WorkerLimits limits_;
  IsolationLayers layers_;
  std::vector<OpenFolder> folders_;
  std::vector<int> kept_descriptors_;
  std::optional<SystemCallFilter> filter_;
};

}  // namespace morvabs
