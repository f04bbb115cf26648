#include "boxes/box_change.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::chrono::seconds patience(20);
constexpr std::chrono::milliseconds pause(10);

/// False when another run has had the lock all the time.
bool lock(int descriptor) {
  auto const end = std::chrono::steady_clock::now() + patience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) {
      if (std::chrono::steady_clock::now() >= end) {
        return false;
      }
      std::this_thread::sleep_for(pause);
    } else if (errno != EINTR) {
      return true;
    }
  }
  return true;
}

bool is_regular(std::string const& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode));
}

}  // namespace

BoxLock::BoxLock(std::string const& directory)
    : descriptor_(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (descriptor_ < 0 && errno != ENOENT) {
    problem_ = std::strerror(errno);
  } else if (descriptor_ >= 0 && !lock(descriptor_)) {
    problem_ = "another run has been changing the boxes for " + std::to_string(patience.count()) +
               " seconds";
  }
  no_signals_.emplace();
}

BoxLock::~BoxLock() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

FormerFile::FormerFile(std::string path)
    : path_(std::move(path)),
      kept_(std::filesystem::path(path_).replace_filename(".former")),
      existed_(is_regular(path_)) {
  unlink(kept_.c_str());
  if (!existed_ || link(path_.c_str(), kept_.c_str()) == 0) {
    return;
  }
  // Not all file systems have links, and not all links are allowed.
  std::error_code error;
  std::filesystem::copy_file(path_, kept_, error);
  if (error) {
    problem_ = "it cannot be kept for the case of a failure: " + error.message();
  }
}

FormerFile::~FormerFile() {
  if (existed_) {
    unlink(kept_.c_str());
  }
}

void FormerFile::restore() const {
  if (existed_) {
    rename(kept_.c_str(), path_.c_str());
  } else {
    unlink(path_.c_str());
  }
}

}  // namespace tool
