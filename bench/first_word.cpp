// What the first word costs a process: the time from its start, dynamic linking included, until a
// line of text is segmented, and the private memory that it took meanwhile. Prints one JSON object
// with a value of each run, every run in a process of its own. Built once for each candidate: of
// cppjieba the word list and the model are loaded, and nothing of its other parts.
//
// Usage: first_word_CANDIDATE [RUNS]

#include "first_word.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char const* line = "数据防泄漏系统在终端上识别敏感文档，并计算它们的指纹。";
constexpr std::size_t usual_runs = 20;

std::int64_t now() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

/// Memory that is this process's own: the pages that it has written. Pages of a mapped file belong
/// to the system's cache, whatever the number of processes that look at them.
std::int64_t private_bytes() {
  std::ifstream in("/proc/self/smaps_rollup");
  std::int64_t sum = 0;
  for (std::string word; in >> word;) {
    std::int64_t kibibytes = 0;
    if (word == "Private_Dirty:" && in >> kibibytes) sum += kibibytes * 1024;
  }
  return sum;
}

/// The measured process; its parent tells when it started it. Looking at the memory is no part of
/// the way to the first word.
int measure(char const* start) {
  std::int64_t const started = now();
  std::int64_t const before = private_bytes();
  std::int64_t const loading = now();
  std::size_t const tokens = count_first_tokens(line);
  std::int64_t const found = now();
  if (tokens < 2) return 1;
  std::int64_t const taken = started - std::strtoll(start, nullptr, 10) + found - loading;
  std::printf("%lld %lld\n", static_cast<long long>(taken),
              static_cast<long long>(private_bytes() - before));
  return 0;
}

struct Run {
  long long nanoseconds = 0;
  long long bytes = 0;
};

/// One process of this program that measures itself; false when it failed.
bool start_child(char* program, Run& run) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return false;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::string option = "--measure";
  std::string start = std::to_string(now());
  std::array<char*, 4> arguments = {program, option.data(), start.data(), nullptr};
  pid_t child = 0;
  int const error =
      posix_spawn(&child, "/proc/self/exe", &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::FILE* const output = fdopen(ends[0], "r");
  bool const is_read =
      error == 0 && std::fscanf(output, "%lld %lld", &run.nanoseconds, &run.bytes) == 2;
  std::fclose(output);
  int status = 0;
  return error == 0 && waitpid(child, &status, 0) == child && status == 0 && is_read;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--measure") return measure(argv[2]);
  std::vector<Run> runs(argc > 1 ? std::stoul(argv[1]) : usual_runs);
  for (Run& run : runs) {
    if (!start_child(argv[0], run)) return 1;
  }
  std::printf("{\"name\": \"first_word/%s/line\", \"seconds\": [", candidate_name);
  for (Run const& run : runs) {
    std::printf("%s%.6f", &run == runs.data() ? "" : ", ",
                static_cast<double>(run.nanoseconds) * 1e-9);
  }
  std::printf("], \"peak_bytes\": [");
  for (Run const& run : runs) {
    std::printf("%s%lld", &run == runs.data() ? "" : ", ", run.bytes);
  }
  std::printf("]}\n");
  return 0;
}
