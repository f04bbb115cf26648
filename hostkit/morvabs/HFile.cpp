#include "host/HFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/native_path.h"
#include "host/utf8.h"
#include "morvabs/atomic_file.h"
#include "morvabs/file_access.h"
#include "morvabs/path_bytes.h"
#include "morvabs/permissions.h"
#include "morvabs/text_decoder.h"

namespace {

constexpr std::int64_t largest_text = std::int64_t{1} << 30;
constexpr std::size_t chunk_size = std::size_t{1} << 16;

/// Nothing, with `errno` as for a missing file, for a path that no file can have.
std::optional<std::string> path_of(HString const& path) {
  auto bytes = morvabs::to_path(path);
  if (!bytes || bytes->empty()) {
    errno = ENOENT;
    return std::nullopt;
  }
  return bytes;
}

std::optional<struct stat> status_of(HString const& path) {
  auto const bytes = path_of(path);
  struct stat status {};
  if (!bytes || ::stat(bytes->c_str(), &status) != 0) {
    return std::nullopt;
  }
  return status;
}

/// Whether a call of the system did what it does to a path. What is in the way when memory has run
/// out can still be removed.
bool done(int (*call)(char const*), HString const& path) {
  morvabs::PathBytes const bytes(path);
  if (bytes.get() == nullptr) {
    errno = ENOENT;
    return false;
  }
  return call(bytes.get()) == 0;
}

bool copy_content(std::string const& path, morvabs::AtomicFile& target) {
  morvabs::OpenedFile const file = morvabs::open_regular_file(path);
  if (file.error != 0) {
    errno = file.error;
    return file.error == ENOENT;
  }
  std::vector<char> chunk(chunk_size);
  std::int64_t left = file.size;
  while (left > 0) {
    auto const wanted = std::min(left, static_cast<std::int64_t>(chunk.size()));
    std::int64_t const got = morvabs::read_bytes(file.descriptor.get(), chunk.data(), wanted);
    if (got < 0 || !target.write({chunk.data(), static_cast<std::size_t>(got)})) {
      return false;
    }
    left = got < wanted ? 0 : left - got;
  }
  return true;
}

/// Makes the directories on the way that are missing, and at last the path itself. The error number
/// of the first one that could not be made, else 0.
int make_directories(std::string const& path) {
  int error = 0;
  for (std::size_t end = 0; end != std::string::npos;) {
    end = path.find('/', end + 1);
    int const made = ::mkdir(path.substr(0, end).c_str(), morvabs::new_directory_permissions);
    if (made != 0 && errno != EEXIST && error == 0) {
      error = errno;
    }
  }
  return error;
}

}  // namespace

bool HFile::IsFileExist(HString const& path) {
  return status_of(path).has_value();
}

bool HFile::IsFileExistFile(HString const& path) {
  auto const status = status_of(path);
  return status && S_ISREG(status->st_mode);
}

bool HFile::IsFileExistDir(HString const& path) {
  auto const status = status_of(path);
  return status && S_ISDIR(status->st_mode);
}

bool HFile::make_dir(HString const& path) {
  auto const bytes = path_of(path);
  if (!bytes) {
    return false;
  }
  int const error = bytes->size() < PATH_MAX ? make_directories(*bytes) : ENAMETOOLONG;
  bool const is_there = IsFileExistDir(path);
  if (!is_there) {
    errno = error != 0 ? error : ENOTDIR;
  }
  return is_there;
}

bool HFile::del_empty_dir(HString const& path) {
  return done(::rmdir, path);
}

bool HFile::delete_file(HString const& path) {
  return done(::unlink, path);
}

bool HFile::touch(HString const& path) {
  auto const bytes = path_of(path);
  if (!bytes) {
    return false;
  }
  if (IsFileExist(path)) {
    return true;
  }
  HString const directory = path.get_path(true);
  if (directory.not_empty() && !make_dir(directory)) {
    return false;
  }
  int const flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  morvabs::FileDescriptor const file(::open(bytes->c_str(), flags, morvabs::new_file_permissions));
  int const error = errno;
  // Another process may have been faster.
  bool const is_there = file.is_open() || IsFileExist(path);
  errno = error;
  return is_there;
}

long long HFile::GetFileLen(HString const& path) {
  auto const status = status_of(path);
  return status && S_ISREG(status->st_mode) ? status->st_size : 0;
}

bool HFile::GetFileContentAny(HString const& path, HString& text) {
  auto const bytes = path_of(path);
  std::string content;
  bool const is_read = bytes && morvabs::read_file(*bytes, content, largest_text);
  text = HString::from_text(morvabs::decode_wide_text(content));
  return is_read;
}

bool HFile::write_to_file(HString const& path, HString const& text, bool /*reserved*/,
                          bool append) {
  auto const bytes = path_of(path);
  if (!bytes) {
    return false;
  }
  morvabs::AtomicFile file(*bytes, morvabs::AtomicFile::Access::keep);
  if (append && !copy_content(*bytes, file)) {
    return false;
  }
  return file.write(morvabs::to_utf8(text.get_ws())) && file.commit();
}
