#include "morvabs/file_access.h"

#include <cerrno>
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
  file.descriptor =
      FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
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
