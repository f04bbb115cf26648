#include "morvabs/atomic_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "morvabs/file_access.h"
#include "morvabs/permissions.h"

namespace morvabs {

namespace {

constexpr std::size_t buffer_size = std::size_t{1} << 16;
constexpr mode_t all_permissions = 07777;

std::string directory_of(std::string const& path) {
  std::size_t const slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string behind_links(std::string const& path) {
  std::array<char, PATH_MAX> resolved;
  return ::realpath(path.c_str(), resolved.data()) == nullptr ? path : std::string(resolved.data());
}

/// Of a link that `behind_links` left: it leads to nothing, or to what has no path, as a pipe.
int why_unresolved(std::string const& link) {
  struct stat target {};
  return ::stat(link.c_str(), &target) == 0 ? EINVAL : errno;
}

/// A rename lasts only when its directory is on disk too. A file system that cannot do that has
/// still taken the file, so this is no failure.
void sync_directory(char const* path) {
  FileDescriptor const opened(::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.is_open()) {
    ::fsync(opened.get());
  }
}

}  // namespace

AtomicFile::AtomicFile(std::string path, Access access) : path_(std::move(path)) {
  if (path_.empty() || path_.find('\0') != std::string::npos) {
    error_ = ENOENT;
    return;
  }
  if (access == Access::keep) {
    path_ = behind_links(path_);
  }
  open(access);
}

AtomicFile::~AtomicFile() {
  discard();
}

bool AtomicFile::open(Access access) {
  struct stat old {};
  bool const exists = ::lstat(path_.c_str(), &old) == 0;
  if (exists && access == Access::keep && S_ISLNK(old.st_mode)) {
    return fail(why_unresolved(path_));
  }
  bool const is_replaceable = S_ISREG(old.st_mode) || S_ISLNK(old.st_mode);
  if (exists && !is_replaceable) {
    return fail(S_ISDIR(old.st_mode) ? EISDIR : EINVAL);
  }
  bool const keeps_old = access == Access::keep && exists && S_ISREG(old.st_mode);
  if (keeps_old) {
    kept_ = Owner{old.st_uid, old.st_gid, old.st_mode & all_permissions};
  }
  // What replaces another file is its own user's alone until it is whole.
  mode_t const mode =
      access == Access::keep && !keeps_old ? new_file_permissions : private_file_permissions;
  temporary_ = make_temporary_file(directory_of(path_), mode);
  return temporary_.error == 0 || fail(std::exchange(temporary_, {}).error);
}

/// Before that a leftover is this user's, who alone removes it.
bool AtomicFile::hand_over() {
  if (!kept_) {
    return true;
  }
  // Only root can give a file away, and for everybody else the owner is the same anyway. A change
  // of owner clears bits of the mode, so the mode comes last.
  int const descriptor = temporary_.descriptor.get();
  bool const same_owner = ::fchown(descriptor, kept_->user, kept_->group) == 0;
  return ::fchmod(descriptor, same_owner ? kept_->mode : kept_->mode & 0777U) == 0;
}

bool AtomicFile::write(std::string_view bytes) {
  if (!temporary_.descriptor.is_open()) {
    return fail(EBADF);
  }
  while (!bytes.empty()) {
    std::size_t const taken = std::min(bytes.size(), buffer_size - buffer_.size());
    buffer_.append(bytes.substr(0, taken));
    bytes.remove_prefix(taken);
    if (buffer_.size() == buffer_size && !flush()) {
      return false;
    }
  }
  return true;
}

bool AtomicFile::commit() {
  if (!temporary_.descriptor.is_open()) {
    return fail(EBADF);
  }
  if (!flush()) {
    return false;
  }
  // After the rename nothing may fail any more, memory included.
  std::string const directory = directory_of(path_);
  // Some file systems report a failed write only when the file is closed.
  if (!hand_over() || ::fsync(temporary_.descriptor.get()) != 0 ||
      ::close(temporary_.descriptor.release()) != 0 ||
      ::rename(temporary_.path.c_str(), path_.c_str()) != 0) {
    return fail(errno);
  }
  temporary_ = {};
  sync_directory(directory.empty() ? "." : directory.c_str());
  return true;
}

bool AtomicFile::flush() {
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    ssize_t const written = ::write(temporary_.descriptor.get(), rest.data(), rest.size());
    if (written > 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return fail(written == 0 ? EIO : errno);
    }
  }
  buffer_.clear();
  return true;
}

bool AtomicFile::fail(int error) {
  if (error_ == 0) {
    error_ = error;
  }
  discard();
  errno = error_;
  return false;
}

void AtomicFile::discard() {
  if (!temporary_.path.empty()) {
    ::unlink(temporary_.path.c_str());
  }
  temporary_ = {};
}

bool read_file(std::string const& path, std::string& content, std::int64_t limit) {
  content.clear();
  OpenedFile const file = open_regular_file(path);
  if (file.error != 0 || file.size > limit) {
    errno = file.error != 0 ? file.error : EFBIG;
    return false;
  }
  // The size is a hint only: a file may grow, and files that the system makes up on reading have
  // none. One byte beyond the limit tells that there is too much.
  std::int64_t const beyond = limit + 1;
  std::int64_t used = 0;
  std::int64_t room = std::min(file.size + 4096, beyond);
  int error = EFBIG;
  while (used <= limit) {
    content.resize(static_cast<std::size_t>(room));
    std::int64_t const got = read_bytes(file.descriptor.get(), content.data() + used, room - used);
    if (got < 0) {
      error = errno;
      break;
    }
    used += got;
    if (used < room) {
      content.resize(static_cast<std::size_t>(used));
      return true;
    }
    room = std::min(room * 2, beyond);
  }
  content.clear();
  content.shrink_to_fit();
  errno = error;
  return false;
}

}  // namespace morvabs
