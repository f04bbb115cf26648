#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "morvaai.h"

namespace tool {

/// Progress of a piece of work, in one line of standard error that is written anew ten times a
/// second and goes when the object does. Nothing is shown in the first second, nor where standard
/// error is no terminal or has the log. Of two objects that live at a time only the first is shown.
///
/// While it is shown there is a second thread, which takes no locks that others take, so that
/// processes may be forked. A signal that ends the program takes the line away first.
class Progress {
 public:
  /// Work on so many things.
  explicit Progress(std::size_t count, std::string unit = "files");
  /// Work whose end cannot be told, as "learning".
  explicit Progress(std::string work);
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

  /// So many are done, `path` the last of them.
  void show(std::size_t finished, HString const& path) const;
  /// Other work of the same run begins, whose end cannot be told; the first second is that of the
  /// run, and so is the time that is shown.
  void note(std::string work) const;
  /// The work has ended.
  void clear();

 private:
  friend class Hush;
  class Line;
  std::unique_ptr<Line> line_;
};

/// Keeps the terminal free of progress while it lives, for lines of others.
class Hush {
 public:
  Hush();
  ~Hush();
  Hush(Hush const&) = delete;
  Hush& operator=(Hush const&) = delete;

 private:
  Progress::Line* line_;
};

}  // namespace tool
