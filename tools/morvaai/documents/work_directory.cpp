#include "documents/work_directory.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "morvaai.h"

#include "no_signals.h"

namespace tool {

namespace {

constexpr char const* variable = "MORVA_RUN_PATH";
constexpr std::string_view prefix = "morvaai-run-";
constexpr std::string_view any_end = "XXXXXX";

std::filesystem::path working_place() {
  char const* const set = std::getenv(variable);
  bool const is_set = set != nullptr && *set != '\0';
  std::filesystem::path const place = is_set ? set : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(place);
  return std::filesystem::absolute(place);
}

int open_directory(std::filesystem::path const& path) {
  return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Workers that have not quite ended may still put something there.
void remove_directory(std::filesystem::path const& path) {
  constexpr int most_tries = 100;
  constexpr std::chrono::milliseconds pause(20);
  std::error_code failure;
  std::filesystem::remove_all(path, failure);
  for (int tries = 1; failure && tries < most_tries; ++tries) {
    std::this_thread::sleep_for(pause);
    std::filesystem::remove_all(path, failure);
  }
}

/// Whether a killed run of this user left the directory: then nobody has it locked.
bool is_left(int directory) {
  struct stat status {};
  return morvabs::sees_all_locks(directory) && fstat(directory, &status) == 0 &&
         status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 &&
         flock(directory, LOCK_SH | LOCK_NB) == 0;
}

void remove_leftovers(std::filesystem::path const& place) {
  std::error_code unread;
  for (std::filesystem::directory_iterator entry(place, unread), end; entry != end;
       entry.increment(unread)) {
    std::string const name = entry->path().filename().string();
    if (!name.starts_with(prefix) || name.size() != prefix.size() + any_end.size()) {
      continue;
    }
    int const directory = open_directory(entry->path());
    if (directory >= 0 && is_left(directory)) {
      std::error_code ignored;
      std::filesystem::remove_all(entry->path(), ignored);
    }
    if (directory >= 0) {
      close(directory);
    }
  }
}

/// False when another run has taken the new directory for a leftover before it was locked.
bool lock(int directory) {
  if (flock(directory, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    return false;
  }
  struct stat status {};
  return fstat(directory, &status) == 0 && status.st_nlink > 0;
}

/// A new directory and what holds its lock.
std::pair<std::filesystem::path, int> make_directory() {
  std::filesystem::path const place = working_place();
  remove_leftovers(place);
  constexpr int most_tries = 16;
  for (int tries = 0; tries < most_tries; ++tries) {
    std::string name = place / std::string(prefix).append(any_end);
    if (mkdtemp(name.data()) == nullptr) {
      break;
    }
    int const directory = open_directory(name);
    if (directory >= 0 && lock(directory)) {
      return {name, directory};
    }
    int const error = directory >= 0 ? EAGAIN : errno;
    close(directory);
    rmdir(name.c_str());
    errno = error;
  }
  throw std::system_error(errno, std::system_category(), place.string());
}

/// Waits until nobody holds the other end any more. Signals stay blocked, and those for the whole
/// group of processes do not come here.
[[noreturn]] void keep(int end, std::filesystem::path const& directory) {
  setsid();
  char byte = 0;
  while (read(end, &byte, 1) < 0 && errno == EINTR) {
  }
  remove_directory(directory);
  _exit(0);
}

}  // namespace

WorkDirectory::WorkDirectory() {
  // None may come between making the directory and keeping it.
  NoSignals const no_signals;
  std::tie(path_, lock_) = make_directory();
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
  // It may have been killed.
  remove_directory(path_);
  close(lock_);
}

}  // namespace tool
