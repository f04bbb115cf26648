#pragma once

#include <set>
#include <string>

namespace test {

/// The calls of the system made while this lives that a library in a host's process has no business
/// with: each would change what belongs to the host, or start something.
class WatchedCalls {
 public:
  WatchedCalls();
  ~WatchedCalls();
  WatchedCalls(WatchedCalls const&) = delete;
  WatchedCalls& operator=(WatchedCalls const&) = delete;

  /// Their names.
  static std::set<std::string> made();
};

}  // namespace test
