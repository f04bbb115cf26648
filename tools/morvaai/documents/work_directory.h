#pragma once

#include <filesystem>
#include <vector>

#include <sys/types.h>

namespace tool {

/// A directory of this run alone, in which the library puts its working files for as long as the
/// object lives. It is made below MORVA_RUN_PATH where that is set, else among the system's
/// temporary files, and only its owner can look into it.
///
/// It goes with all it holds however the run ends, killed included: a process that waits for that
/// end removes it. Where that process was killed too, or the machine stopped, a later run does:
/// before it makes its own it removes the directories of this name, "morvaai-run-" and six
/// characters, that are this user's, closed to others, and locked (flock) by no run. On network
/// file systems and others whose locks may be those of one machine they stay.
class WorkDirectory {
 public:
  /// Throws std::system_error when there is no place for it.
  WorkDirectory();
  ~WorkDirectory();
  WorkDirectory(WorkDirectory const&) = delete;
  WorkDirectory& operator=(WorkDirectory const&) = delete;

  std::filesystem::path const& path() const { return path_; }
  /// What has to stay open in the workers of this run, so that the directory stays while one lives.
  std::vector<int> descriptors() const { return {lock_, lifeline_}; }

 private:
  std::filesystem::path path_;
  /// Shared with the keeper and the workers: the directory stays locked while one of them lives.
  int lock_ = -1;
  pid_t keeper_ = -1;
  /// Open in this process and its workers, so that it closes when the last of them ends.
  int lifeline_ = -1;
};

}  // namespace tool
