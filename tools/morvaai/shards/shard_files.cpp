#include "shards/shard_files.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shards/shard_error.h"

namespace tool {

namespace {

constexpr mode_t new_file_permissions = 0664;
constexpr mode_t permission_bits = 0777;

// As many bytes as there are, taking up again after a signal; -1 on failure.
std::int64_t read_fully(int descriptor, char* bytes, std::size_t size, std::uint64_t offset) {
  std::size_t done = 0;
  while (done < size) {
    ssize_t const got =
        pread(descriptor, bytes + done, size - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return -1;
    }
    if (got == 0) {
      break;
    }
    done += static_cast<std::size_t>(got);
  }
  return static_cast<std::int64_t>(done);
}

// The error number of what keeps them from being written; 0 where they are.
int write_fully(int descriptor, std::string_view bytes, std::uint64_t offset) {
  while (!bytes.empty()) {
    ssize_t const put = pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (put < 0 && errno == EINTR) {
      continue;
    }
    if (put <= 0) {
      return put == 0 ? EIO : errno;
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
  return 0;
}

std::string behind_links(std::string const& path) {
  std::array<char, PATH_MAX> resolved;
  return realpath(path.c_str(), resolved.data()) == nullptr ? path : std::string(resolved.data());
}

// A rename lasts only when its directory is on disk too. A file system that cannot do that has
// still taken the file, so this is no failure.
void sync_directory_of(std::string const& path) {
  std::size_t const slash = path.rfind('/');
  std::string const directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  Descriptor const opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.is_open()) {
    fsync(opened.get());
  }
}

// Another process may have removed or renamed the file between the opening and the locking.
bool is_at(int descriptor, std::string const& path) {
  struct stat open_one {};
  struct stat named {};
  return fstat(descriptor, &open_one) == 0 && lstat(path.c_str(), &named) == 0 &&
         open_one.st_dev == named.st_dev && open_one.st_ino == named.st_ino;
}

}  // namespace

Descriptor::~Descriptor() {
  if (is_open()) {
    close(number_);
  }
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

InputFile::InputFile(std::string path)
    : path_(std::move(path)),
      // One that is a pipe is not waited for.
      descriptor_(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  struct stat status {};
  if (!descriptor_.is_open() || fstat(descriptor_.get(), &status) != 0) {
    if (errno == EMFILE) {
      throw ShardError(path_, "too many shards at once; merge some of them first");
    }
    throw ShardError(path_, errno);
  }
  if (!S_ISREG(status.st_mode)) {
    throw ShardError(path_, S_ISDIR(status.st_mode) ? "a folder, no shard" : "no regular file");
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

std::string InputFile::read(std::uint64_t offset, std::size_t size) const {
  std::string bytes(size, '\0');
  std::int64_t const got = read_fully(descriptor_.get(), bytes.data(), size, offset);
  if (got < 0) {
    throw ShardError(path_, errno);
  }
  if (static_cast<std::size_t>(got) != size) {
    throw ShardError(path_, "became shorter while it was read");
  }
  return bytes;
}

LockedFile::LockedFile(std::string path) : path_(std::move(path)) {
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  constexpr int most_tries = 16;
  for (int tries = 0; tries < most_tries; ++tries) {
    descriptor_ = Descriptor(open(path_.c_str(), flags, new_file_permissions));
    struct stat status {};
    if (!descriptor_.is_open() || fstat(descriptor_.get(), &status) != 0) {
      throw ShardError(path_, errno);
    }
    if (!S_ISREG(status.st_mode)) {
      throw ShardError(path_, "no regular file");
    }
    // File systems without locks have files nevertheless.
    if (flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
      throw ShardError(path_, "in use: another process is writing it");
    }
    if (is_at(descriptor_.get(), path_)) {
      return;
    }
  }
  throw ShardError(path_, "in use: another process is writing it");
}

std::string LockedFile::read(std::uint64_t offset, std::size_t size) const {
  std::string bytes(size, '\0');
  std::int64_t const got = read_fully(descriptor_.get(), bytes.data(), size, offset);
  if (got < 0) {
    throw ShardError(path_, errno);
  }
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

void LockedFile::write(std::uint64_t offset, std::string_view bytes) {
  if (int const error = write_fully(descriptor_.get(), bytes, offset); error != 0) {
    // That this fails too is found when the file is read.
    static_cast<void>(ftruncate(descriptor_.get(), static_cast<off_t>(offset)) == 0);
    throw ShardError(path_, error);
  }
}

void LockedFile::truncate(std::uint64_t size) {
  if (ftruncate(descriptor_.get(), static_cast<off_t>(size)) != 0) {
    throw ShardError(path_, errno);
  }
}

void LockedFile::move_to(std::string const& path) {
  std::string const place = behind_links(path);
  struct stat old {};
  bool const keeps = stat(place.c_str(), &old) == 0;
  if ((keeps && fchmod(descriptor_.get(), old.st_mode & permission_bits) != 0) ||
      fsync(descriptor_.get()) != 0 || rename(path_.c_str(), place.c_str()) != 0) {
    throw ShardError(path, errno);
  }
  path_ = place;
  sync_directory_of(place);
}

void LockedFile::remove() {
  if (unlink(path_.c_str()) != 0) {
    throw ShardError(path_, errno);
  }
}

}  // namespace tool
