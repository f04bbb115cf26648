#include "measured_run.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <ctime>
#include <fstream>
#include <string>
#include <utility>

#include <malloc.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double enough_seconds = 1.0;
constexpr int most_runs = 7;

double cpu_seconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// A line of /proc/self/status, in bytes.
double memory_status(std::string const& name) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(name + ":")) {
      return std::stod(line.substr(name.size() + 1)) * 1024.0;
    }
  }
  return 0.0;
}

[[noreturn]] void run_child(int pipe_end, std::function<std::uint64_t()> const& work) {
  double const before = memory_status("VmRSS");
  auto const start = Clock::now();
  double const cpu_before = cpu_seconds();
  Measured measured;
  measured.result = work();
  measured.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  measured.cpu_seconds = cpu_seconds() - cpu_before;
  measured.peak_bytes = memory_status("VmHWM") - before;
  bool const told = write(pipe_end, &measured, sizeof measured) == sizeof measured;
  _exit(told ? 0 : 1);
}

std::optional<Measured> measure_once(std::function<std::uint64_t()> const& work,
                                     double limit_seconds) {
  int ends[2];
  if (pipe(ends) != 0) {
    return std::nullopt;
  }
  // What was freed must neither count as memory nor be there for the work to use.
  malloc_trim(0);
  pid_t const child = fork();
  if (child == 0) {
    run_child(ends[1], work);
  }
  close(ends[1]);
  Measured measured;
  pollfd waiting{ends[0], POLLIN, 0};
  bool const done = child > 0 &&
                    poll(&waiting, 1, static_cast<int>(std::ceil(limit_seconds * 1000.0))) == 1 &&
                    read(ends[0], &measured, sizeof measured) == sizeof measured;
  close(ends[0]);
  if (child > 0) {
    if (!done) {
      kill(child, SIGKILL);
    }
    waitpid(child, nullptr, 0);
  }
  return done ? std::optional(measured) : std::nullopt;
}

void mix(std::uint64_t& hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x100000001b3ULL;
  hash ^= hash >> 29;
}

// What the measuring itself takes in a child.
double own_bytes() {
  auto const nothing = measure_once([] { return std::uint64_t{0}; }, enough_seconds);
  return nothing ? nothing->peak_bytes : 0.0;
}

}  // namespace

std::optional<MeasuredRuns> measure(std::function<std::uint64_t()> const& work,
                                    double limit_seconds) {
  double const own = own_bytes();
  MeasuredRuns runs;
  double total = 0.0;
  for (int i = 0; i < most_runs && total < enough_seconds; ++i) {
    auto one = measure_once(work, limit_seconds);
    if (!one) {
      break;
    }
    one->peak_bytes = std::max(one->peak_bytes - own, 0.0);
    total += one->seconds;
    runs.seconds.push_back(one->seconds);
    runs.cpu_seconds.push_back(one->cpu_seconds);
    runs.peak_bytes.push_back(one->peak_bytes);
    if (runs.seconds.size() == 1 || one->seconds < runs.best.seconds) {
      runs.best = *one;
    }
  }
  return runs.seconds.empty() ? std::nullopt : std::optional(std::move(runs));
}

std::uint64_t fingerprint_of(std::vector<std::vector<int>> const& clusters) {
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (std::vector<int> const& members : clusters) {
    mix(hash, members.size());
    for (int const member : members) {
      mix(hash, static_cast<std::uint64_t>(member));
    }
  }
  return hash;
}

std::uint64_t fingerprint_of(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

}  // namespace bench
