#pragma once

#include <cstddef>

#include "morvaai.h"

namespace tool {

/// Progress over a number of files, in one line of standard error that is overwritten. Nothing is
/// shown where standard error is no terminal, or for a single file.
class Progress {
 public:
  explicit Progress(std::size_t count);

  /// A bar, and the file that was finished last.
  void show(std::size_t finished, HString const& path) const;
  /// What is being done with all of them.
  void note(char const* text) const;
  void clear() const;

 private:
  std::size_t count_;
  bool is_shown_;
};

}  // namespace tool
