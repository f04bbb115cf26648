#pragma once

#include <optional>
#include <string>

#include "no_signals.h"

namespace tool {

/// Keeps other runs of the program from changing the boxes while it lives, and holds back signals,
/// so that a change is made as a whole. Where the file system of the boxes has no locks it does
/// without.
class BoxLock {
 public:
  /// Waits for another run for some seconds. `directory` is that of the boxes; one that is missing
  /// needs no lock.
  explicit BoxLock(std::string const& directory);
  ~BoxLock();
  BoxLock(BoxLock const&) = delete;
  BoxLock& operator=(BoxLock const&) = delete;

  /// Why there is no lock, and nothing may be changed.
  std::optional<std::string> const& problem() const { return problem_; }

 private:
  int descriptor_ = -1;
  std::optional<std::string> problem_;
  std::optional<NoSignals> no_signals_;
};

/// A file as it was before a change, for as long as the object lives: it stands beside as
/// ".former", a second name of the same content. One that a killed run left there is replaced. At
/// most one may live in a directory, so it is used under the lock.
class FormerFile {
 public:
  /// A file that does not exist is remembered as missing.
  explicit FormerFile(std::string path);
  ~FormerFile();
  FormerFile(FormerFile const&) = delete;
  FormerFile& operator=(FormerFile const&) = delete;

  /// Why it could not be kept, and is not to be changed.
  std::optional<std::string> const& problem() const { return problem_; }
  /// Puts the file back, or removes what was not there.
  void restore() const;

 private:
  std::string path_;
  std::string kept_;
  bool existed_ = false;
  std::optional<std::string> problem_;
};

}  // namespace tool
