#pragma once

#include <filesystem>

#include <sys/types.h>

namespace tool {

/// A directory of this run alone, in which the library puts its working files for as long as the
/// object lives. It is made below MORVA_RUN_PATH where that is set, else among the system's
/// temporary files, and only its owner can look into it.
///
/// It goes with all it holds however the run ends, killed included: a process that waits for that
/// end removes it.
class WorkDirectory {
 public:
  /// Throws std::system_error when there is no place for it.
  WorkDirectory();
  ~WorkDirectory();
  WorkDirectory(WorkDirectory const&) = delete;
  WorkDirectory& operator=(WorkDirectory const&) = delete;

  std::filesystem::path const& path() const { return path_; }

 private:
  std::filesystem::path path_;
  pid_t keeper_ = -1;
  /// Open in this process and its workers, so that it closes when the last of them ends.
  int lifeline_ = -1;
};

}  // namespace tool
