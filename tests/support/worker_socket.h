#pragma once

#include <cstdint>

#include <sys/stat.h>
#include <unistd.h>

namespace test {

/// In a task: the socket through which its worker answers, for what a worker that was taken over
/// would write there.
inline int worker_socket() {
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode)) {
      return descriptor;
    }
  }
  return -1;
}

/// In a task: begins an answer of that kind and value, as if from the task of that number.
inline void write_answer(std::uint64_t kind, std::uint64_t value, std::uint64_t task = 0) {
  std::uint64_t const answer[3] = {kind, task, value};
  static_cast<void>(!write(worker_socket(), answer, sizeof answer));
}

}  // namespace test
