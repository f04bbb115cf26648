// Runs a command and tells what it took. A process begins with the peak of memory of what it was
// forked from, so a command is started by this small program instead of by the driver itself.
//
// Usage: measured_command DESCRIPTOR COMMAND [ARGUMENT...]
// writes one line of JSON to the descriptor: wall and CPU time in seconds, the peak of the largest
// process in bytes, the exit status (128 and the signal where one ended it).

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double seconds(timeval const& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("Usage: measured_command DESCRIPTOR COMMAND [ARGUMENT...]\n", stderr);
    return 2;
  }
  int const descriptor = std::atoi(argv[1]);
  auto const start = std::chrono::steady_clock::now();
  pid_t const child = fork();
  if (child == 0) {
    close(descriptor);
    execvp(argv[2], argv + 2);
    std::perror(argv[2]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("measured_command");
    return 1;
  }
  std::chrono::duration<double> const wall = std::chrono::steady_clock::now() - start;
  int const code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  constexpr char const* format =
      R"({"seconds": %.6f, "cpu_seconds": %.6f, "peak_bytes": %ld, "status": %d})";
  dprintf(descriptor, format, wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
          usage.ru_maxrss * 1024, code);
  return 0;
}
