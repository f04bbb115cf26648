#include "morvabs/temporary_file.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/file_locks.h"
#include "morvabs/uuid.h"

namespace morvabs {

namespace {

constexpr std::string_view prefix = ".morva-";

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

bool is_temporary_name(std::string_view name) {
  constexpr std::size_t digits = 32;
  return name.size() == prefix.size() + digits && name.starts_with(prefix) &&
         name.find_first_not_of("0123456789abcdef", prefix.size()) == std::string_view::npos;
}

/// Whether the directory has not been looked through for a while.
bool is_due(std::string const& directory) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::minutes pause(1);
  constexpr std::size_t most = 1000;
  static std::mutex mutex;
  // Never freed: other threads may still write while the process ends.
  static std::set<std::string>& seen = *std::make_unique<std::set<std::string>>().release();
  static Clock::time_point begun;
  std::lock_guard const guard(mutex);
  if (seen.size() >= most || Clock::now() - begun > pause) {
    seen.clear();
    begun = Clock::now();
  }
  return seen.insert(directory).second;
}

/// A shared lock is enough to tell that no writer has its own, and needs no more than reading.
void remove_if_left(int directory, char const* name) {
  constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  FileDescriptor const file(::openat(directory, name, flags));
  struct stat status {};
  if (file.is_open() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
      status.st_uid == ::geteuid() && ::flock(file.get(), LOCK_SH | LOCK_NB) == 0) {
    ::unlinkat(directory, name, 0);
  }
}

void remove_leftovers(std::string const& path) {
  Directory const directory(::opendir(path.empty() ? "." : path.c_str()));
  if (!directory || !sees_all_locks(::dirfd(directory.get()))) {
    return;
  }
  while (dirent const* const entry = ::readdir(directory.get())) {
    if (is_temporary_name(entry->d_name)) {
      remove_if_left(::dirfd(directory.get()), entry->d_name);
    }
  }
}

/// Between making a file and locking it another process may take it for a leftover. False then.
bool is_kept(TemporaryFile const& file) {
  if (::flock(file.lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    return false;
  }
  struct stat status {};
  return ::fstat(file.lock.get(), &status) == 0 && status.st_nlink > 0;
}

TemporaryFile make_file(std::string const& directory, mode_t mode) {
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
  TemporaryFile file;
  // A name of its own length: the file's last name may already be as long as a name can be.
  file.path = directory + std::string(prefix) + make_short_uuid();
  file.descriptor = FileDescriptor(::open(file.path.c_str(), flags, mode));
  if (!file.descriptor.is_open()) {
    file.error = errno;
    return file;
  }
  file.lock = FileDescriptor(::fcntl(file.descriptor.get(), F_DUPFD_CLOEXEC, 0));
  if (!file.lock.is_open()) {
    file.error = errno;
  } else if (!is_kept(file)) {
    file.error = EAGAIN;
  }
  if (file.error != 0) {
    ::unlink(file.path.c_str());
  }
  return file;
}

}  // namespace

TemporaryFile make_temporary_file(std::string const& directory, mode_t mode) {
  if (is_due(directory)) {
    remove_leftovers(directory);
  }
  constexpr int most_tries = 16;
  TemporaryFile file = make_file(directory, mode);
  for (int tries = 1; file.error == EAGAIN && tries < most_tries; ++tries) {
    file = make_file(directory, mode);
  }
  return file;
}

}  // namespace morvabs
