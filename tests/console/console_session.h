#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace test {

/// Standard input replaced by an open file for one scope.
class StandardInput {
 public:
  explicit StandardInput(std::FILE* file) : old_(dup(STDIN_FILENO)) {
    dup2(fileno(file), STDIN_FILENO);
    std::fclose(file);
    std::clearerr(stdin);
  }
  ~StandardInput() {
    // What was read ahead belongs to the file that goes.
    std::fflush(stdin);
    std::clearerr(stdin);
    dup2(old_, STDIN_FILENO);
    close(old_);
  }
  StandardInput(StandardInput const&) = delete;
  StandardInput& operator=(StandardInput const&) = delete;

 private:
  int old_;
};

inline std::FILE* file_with(std::string const& text) {
  std::FILE* const file = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), file);
  std::rewind(file);
  return file;
}

/// What `run` writes to standard output while it reads `typed` from standard input.
inline std::string console_session(std::string const& typed, std::function<void()> const& run) {
  StandardInput const input(file_with(typed));
  testing::internal::CaptureStdout();
  run();
  return testing::internal::GetCapturedStdout();
}

}  // namespace test
