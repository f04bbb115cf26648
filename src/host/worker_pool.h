#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

namespace morvabs {

/// What one worker process may use.
struct WorkerLimits {
  /// Memory that it may take beyond what it was forked with, in bytes.
  std::uint64_t memory = std::uint64_t{4} << 30;
  /// Time for one task: of the processor, and by the clock, waiting included, but not for `done`.
  int cpu_seconds = 150;
  /// Time for one task by the clock, waiting included, but not that which `done` takes.
  int seconds = 180;
  /// Size of a file that it writes, in bytes. A log file counts from its beginning, so that workers
  /// log no more to one that is larger.
  std::uint64_t file_size = std::uint64_t{1} << 30;
  /// Size of a result, in bytes.
  std::uint64_t result_size = std::uint64_t{256} << 20;
};

/// What a task's failure begins with where a signal ended its worker; the name of the signal, as
/// `strsignal` has it, follows. Other code may compare it.
inline constexpr char const* ended_by_signal = "the worker process ended with signal: ";

/// What workers are shut in by on this machine, beside limits and the loss of their descriptors.
struct IsolationLayers {
  /// System calls are filtered.
  bool system_calls = false;
  /// Version of Landlock that keeps them from files, ports and other processes; 0 for none.
  int landlock = 0;
  /// `WorkerLimits::memory` is in force.
  bool memory = false;
};

/// What the kernel offers. Nothing in builds with sanitizers, whose runtime needs what is refused,
/// nor where MORVA_ISOLATION is "off", as for a debugger.
MORVA_EXPORT IsolationLayers isolation_layers();

/// Runs numbered tasks in forked worker processes that reach nothing but their input, so that a
/// document that crashes its reader, takes it over, hangs in it or eats memory costs its own task
/// only: a fresh worker takes the place of the one that is lost.
///
/// A worker has a copy of what this process holds in memory, and a document that takes it over can
/// put that into its result: run the pool from a process that holds no secrets, such as keys or
/// what is known of other documents.
///
/// Before: what all tasks need is loaded and mapped, as the dictionary by `HJieba::Init`; workers
/// have it from the fork on. Components of the document parser are loaded when the first document
/// asks for one, which then is begun again. Workers are forked while `run` lasts, from the thread
/// that called it: other threads of the process must not hold a lock then that the work needs, and
/// the work must not rely on threads. `run` waits for its children: SIGCHLD is not to be ignored,
/// and nobody else is to wait for children that are not their own.
///
/// Inside, a task may compute, read its own file by its path, as often as it likes, read what is
/// below the readable folders, ask for names and dates of files, and write to files without a name.
/// Any other file, writing, sockets, new processes and new code are refused with an error; a call
/// that no reader makes, as to trace or kill another process, ends the worker. Standard input and
/// output are empty; standard error and the log file are those of this process while the log is on,
/// else there are none. Signal handlers are reset; SIGHUP, SIGINT and SIGQUIT, which a terminal
/// sends to all of its processes, are ignored. A worker ends with this process, and without
/// destructors.
///
/// What comes from a worker is taken for hostile: its size, its form and whose it is are checked.
/// That a result is true is not: one that was taken over may also answer wrongly for the tasks that
/// it gets after.
struct WorkerPool {
  /// Number of worker processes; 0 is 1. Where not all can be started, others do their work.
  std::size_t jobs = 1;
  /// What each worker, and each task in it, may use.
  WorkerLimits limits;
  /// Folders that tasks may read files in, beside their own file.
  std::vector<HString> readable_folders;
  /// A folder that tasks may write in; none if empty. Without Landlock they may then write wherever
  /// this process may.
  HString working_folder;
  /// Descriptors that stay open in the workers, for somebody who waits for the end of all of them.
  std::vector<int> kept_descriptors;

  /// What a task leaves: its result, or why there is none, as a phrase for a person: "out of
  /// memory", "the task ended with an exception", "took more than 150 seconds of CPU time", "no
  /// result within 180 seconds", "the worker process ended with signal: Segmentation fault" or
  /// "with status 1", "was stopped by the sandbox: system call 59", "its result is over 268435456
  /// bytes", "its answer makes no sense".
  struct Outcome {
    /// What `work` returned, in the worker; nothing where the task failed.
    std::optional<std::string> result;
    /// The phrase; empty where there is a result.
    std::string failure;
  };
  /// Does task i and gives its result, in a worker process.
  using Work = std::function<std::string(std::size_t)>;
  /// Takes what task i left, in this process.
  using Done = std::function<void(std::size_t, Outcome)>;

  /// Calls `work(i)` in a worker for each i below `count`, and `done(i, outcome)` in this process,
  /// in the order of i. At most a few results wait for an earlier one at a time, and of those over
  /// `result_size` together no more than two for each worker. False, with the remaining tasks not
  /// run and errno set, when there is no worker left and none can be started.
  MORVA_EXPORT bool run(std::size_t count, Work const& work, Done const& done) const;

  /// The same with a task for each file, which this process opens for it. A file that cannot be
  /// opened gives its task the same error that opening it here gives; so does one that cannot be
  /// sent, as when too many descriptors of the user are under way (ETOOMANYREFS).
  MORVA_EXPORT bool run(std::vector<HString> const& files, Work const& work,
                        Done const& done) const;
};

}  // namespace morvabs
