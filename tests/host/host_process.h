#pragma once

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "made_samples.h"
#include "support/log_capture.h"

namespace test {

/// A process that works for a host, with all that it prints, but the log, in a file.
class HostProcess : public testing::Test {
 protected:
  HostProcess() {
    endurance::settle_in(directory_.path());
    std::fflush(stdout);
    for (std::size_t i = 0; i < streams.size(); ++i) {
      saved_[i] = fcntl(streams[i], F_DUPFD_CLOEXEC, 10);
      dup2(output_, streams[i]);
    }
  }
  ~HostProcess() override { give_back_streams(); }

  /// Before anything is to be reported.
  void give_back_streams() {
    for (std::size_t i = 0; i < streams.size(); ++i) {
      dup2(saved_[i], streams[i]);
    }
  }
  /// One round of all that a host does.
  void work() const { endurance::Round(samples_, 1).run(); }

 private:
  static constexpr std::array<int, 2> streams = {STDOUT_FILENO, STDERR_FILENO};

  LogCapture const log_;
  TemporaryDirectory const directory_;
  endurance::Samples const samples_ = made_samples(directory_);
  int const output_ =
      open((directory_.path() / "output").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  std::array<int, 2> saved_{};
};

}  // namespace test
