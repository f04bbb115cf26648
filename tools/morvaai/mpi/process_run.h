#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "morvaai.h"

namespace tool {

/// Why this program cannot be one of several processes of a run; nothing where it can.
std::optional<std::string> refuse_process_run();

/// Runs `work` in this process, which an MPI launcher has started together with the others of its
/// group, and returns what it returns. MPI lives as long as this runs; once in a process. Where the
/// launcher is of another MPI library, so that each process is alone, `work` is not run: that is
/// told, and the status is that of wrong use.
///
/// An exception in one process ends all processes of the group; one line tells which process, and
/// why. Where the launcher ends them because one is lost, the first process says so.
int run_in_group(std::function<int(std::shared_ptr<HProcessGroup> const&)> const& work);

/// Whether this is the process that looks after what a run has one of, and tells. So is one alone,
/// which has no group.
bool is_first(std::shared_ptr<HProcessGroup> const& group);

/// Whether the run goes on. Each process of the group calls this with its own problem, or with
/// none; it is false in all where one has a problem. The first process tells all of them, each
/// once.
bool all_go_on(std::shared_ptr<HProcessGroup> const& group, std::string const& problem);

}  // namespace tool
