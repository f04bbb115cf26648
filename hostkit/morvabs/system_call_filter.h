#pragma once

#include <cstddef>
#include <vector>

#include <linux/filter.h>
#include <sys/types.h>

namespace morvabs {

/// A seccomp filter for a process that computes on what it holds. It is made once, and installed in
/// any number of processes.
///
/// Allowed: memory without new code, files that are open already, opening files for reading, what
/// files are called and how large they are, time, and signals to itself. With `may_write` files may
/// also be made, written, renamed and removed. What nothing does in good faith, as to run a
/// program, to trace or to signal another process, raises SIGSYS. All else is refused with an
/// error, so that libraries do without it; recent calls fail as in an older kernel. A call of a
/// foreign architecture kills the process.
class SystemCallFilter {
 public:
  explicit SystemCallFilter(bool may_write);

  /// Whether this kernel takes such filters.
  static bool is_available();

  /// Filters the calls of the calling process from now on. It has no new privileges, and one
  /// thread.
  bool install() const;

 private:
  std::vector<sock_filter> program_;
  /// Where the number of the process that may be signalled stands.
  std::size_t own_process_ = 0;
};

}  // namespace morvabs
