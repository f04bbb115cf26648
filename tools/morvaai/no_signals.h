#pragma once

#include <csignal>

namespace tool {

/// Holds back signals while it lives, so that none ends the program between two steps that belong
/// together. They come afterwards.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &old_);
  }
  ~NoSignals() { sigprocmask(SIG_SETMASK, &old_, nullptr); }
  NoSignals(NoSignals const&) = delete;
  NoSignals& operator=(NoSignals const&) = delete;

 private:
  sigset_t old_;
};

}  // namespace tool
