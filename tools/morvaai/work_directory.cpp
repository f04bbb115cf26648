#include "work_directory.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "no_signals.h"

namespace tool {

namespace {

constexpr char const* variable = "MORVA_RUN_PATH";

std::filesystem::path make_directory() {
  char const* const set = std::getenv(variable);
  bool const is_set = set != nullptr && *set != '\0';
  std::filesystem::path const place = is_set ? set : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(place);
  std::string name = (std::filesystem::absolute(place) / "morvaai-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::system_category(), place.string());
  }
  return name;
}

/// Waits until nobody holds the other end any more. Signals stay blocked, and those for the whole
/// group of processes do not come here.
[[noreturn]] void keep(int end, std::filesystem::path const& directory) {
  setsid();
  char byte = 0;
  while (read(end, &byte, 1) < 0 && errno == EINTR) {
  }
  std::error_code ignored;
  std::filesystem::remove_all(directory, ignored);
  _exit(0);
}

}  // namespace

WorkDirectory::WorkDirectory() {
  // None may come between making the directory and keeping it.
  NoSignals const no_signals;
  path_ = make_directory();
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) == 0) {
    keeper_ = fork();
  }
  if (keeper_ == 0) {
    close(ends[1]);
    keep(ends[0], path_);
  }
  if (keeper_ < 0) {
    std::system_error const failure(errno, std::system_category(), path_.string());
    std::filesystem::remove(path_);
    throw failure;
  }
  close(ends[0]);
  lifeline_ = ends[1];
  setenv(variable, path_.c_str(), 1);
}

WorkDirectory::~WorkDirectory() {
  close(lifeline_);
  while (waitpid(keeper_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace tool
