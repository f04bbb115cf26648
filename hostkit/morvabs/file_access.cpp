#include "morvabs/file_access.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvabs {

namespace {

template <typename ReadSome>
std::int64_t read_until_full(std::int64_t size, ReadSome read_some) {
  std::int64_t done = 0;
  while (done < size) {
    ssize_t const got = read_some(done, static_cast<std::size_t>(size - done));
    if (got == 0) {
      break;
    }
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      return -1;
    }
    done += got;
  }
  return done;
}

FileDescriptor (*ask_for_file)() = nullptr;

struct HandedFile {
  std::string path;
  FileDescriptor descriptor;
  int error = 0;
};

/// Never freed: files may be opened while the process ends.
HandedFile& handed_file() {
  static auto* const file = new HandedFile;
  return *file;
}

/// A descriptor of its own for the file that was handed over.
FileDescriptor open_again(HandedFile const& file) {
  FileDescriptor descriptor;
  if (file.error == 0) {
    descriptor = FileDescriptor(::fcntl(file.descriptor.get(), F_DUPFD_CLOEXEC, 0));
    ::lseek(descriptor.get(), 0, SEEK_SET);
  } else {
    errno = file.error;
  }
  return descriptor;
}

FileDescriptor open_for_reading(std::string const& path) {
  HandedFile const& handed = handed_file();
  if (!handed.path.empty() && handed.path == path) {
    return open_again(handed);
  }
  return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

}  // namespace

FileDescriptor::~FileDescriptor() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  FileDescriptor old(std::exchange(descriptor_, other.release()));
  return *this;
}

int FileDescriptor::release() {
  return std::exchange(descriptor_, -1);
}

OpenedFile open_regular_file(std::string const& path) {
  OpenedFile file;
  file.descriptor = open_for_reading(path);
  struct stat status {};
  if (!file.descriptor.is_open() || ::fstat(file.descriptor.get(), &status) != 0) {
    file.error = errno;
  } else if (!S_ISREG(status.st_mode)) {
    file.error = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  } else {
    file.size = status.st_size;
    file.mode = status.st_mode;
  }
  if (file.error != 0) {
    file.descriptor = FileDescriptor();
  }
  return file;
}

void hand_over_file(std::string path, FileDescriptor file, int error) {
  handed_file() = {std::move(path), std::move(file), error};
}

FileDescriptor open_unnamed_file() {
  if (ask_for_file != nullptr) {
    return ask_for_file();
  }
  constexpr mode_t own = 0600;
  // Exclusive: it can never be given a name.
  FileDescriptor file(::open(P_tmpdir, O_TMPFILE | O_EXCL | O_RDWR | O_CLOEXEC, own));
  if (file.is_open()) {
    return file;
  }
  std::string name = P_tmpdir "/morva-XXXXXX";
  file = FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
  if (file.is_open()) {
    ::unlink(name.c_str());
  }
  return file;
}

void ask_for_unnamed_files(FileDescriptor (*ask)()) {
  ask_for_file = ask;
}

std::int64_t read_bytes(int descriptor, char* buffer, std::int64_t size) {
  return read_until_full(size, [&](std::int64_t done, std::size_t left) {
    return ::read(descriptor, buffer + done, left);
  });
}

std::int64_t read_bytes_at(int descriptor, char* buffer, std::int64_t size, std::int64_t offset) {
  return read_until_full(size, [&](std::int64_t done, std::size_t left) {
    return ::pread(descriptor, buffer + done, left, offset + done);
  });
}

}  // namespace morvabs
