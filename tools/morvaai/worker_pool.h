#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace tool {

/// Runs numbered tasks in forked worker processes, so that one that crashes, or hangs in a file,
/// costs its own task only: a fresh worker takes its place.
struct WorkerPool {
  /// Number of worker processes.
  std::size_t jobs = 1;
  /// A task that takes longer is killed.
  int seconds_per_task = 180;

  /// What a task leaves: its result, or why there is none.
  struct Outcome {
    std::optional<std::string> result;
    std::string failure;
  };

  /// Calls `work(i)` in a worker for each i below `count`, and `done(i, outcome)` in this process,
  /// in the order of i. At most a few results wait for an earlier one at a time. False, with the
  /// remaining tasks not run, when no worker can be started.
  bool run(std::size_t count, std::function<std::string(std::size_t)> const& work,
           std::function<void(std::size_t, Outcome)> const& done) const;
};

}  // namespace tool
