#include "host/HFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
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
#include "morvabs/text_decoder.h"

namespace {

constexpr std::int64_t largest_text = std::int64_t{1} << 30;
constexpr std::size_t chunk_size = std::size_t{1} << 16;

std::optional<struct stat> status_of(HString const& path) {
  auto const bytes = morvabs::to_path(path);
  struct stat status {};
  if (!bytes || ::stat(bytes->c_str(), &status) != 0) {
    return std::nullopt;
  }
  return status;
}

bool copy_content(std::string const& path, morvabs::AtomicFile& target) {
  morvabs::OpenedFile const file = morvabs::open_regular_file(path);
  if (file.error != 0) {
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
  auto const bytes = morvabs::to_path(path);
  if (!bytes || bytes->empty()) {
    return false;
  }
  std::error_code error;
  std::filesystem::create_directories(*bytes, error);
  return IsFileExistDir(path);
}

bool HFile::del_empty_dir(HString const& path) {
  auto const bytes = morvabs::to_path(path);
  return bytes && ::rmdir(bytes->c_str()) == 0;
}

bool HFile::delete_file(HString const& path) {
  auto const bytes = morvabs::to_path(path);
  return bytes && ::unlink(bytes->c_str()) == 0;
}

bool HFile::touch(HString const& path) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes || bytes->empty()) {
    return false;
  }
  if (IsFileExist(path)) {
    return true;
  }
  HString const directory = path.get_path(true);
  if (directory.not_empty() && !make_dir(directory)) {
    return false;
  }
  constexpr mode_t readable_by_umask = 0666;
  int const flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  morvabs::FileDescriptor const file(::open(bytes->c_str(), flags, readable_by_umask));
  // Another process may have been faster.
  return file.is_open() || IsFileExist(path);
}

long long HFile::GetFileLen(HString const& path) {
  auto const status = status_of(path);
  return status && S_ISREG(status->st_mode) ? status->st_size : 0;
}

bool HFile::GetFileContentAny(HString const& path, HString& text) {
  auto const bytes = morvabs::to_path(path);
  std::string content;
  bool const is_read = bytes && morvabs::read_file(*bytes, content, largest_text);
  text = HString::from_text(morvabs::decode_wide_text(content));
  return is_read;
}

bool HFile::write_to_file(HString const& path, HString const& text, bool /*reserved*/,
                          bool append) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return false;
  }
  morvabs::AtomicFile file(*bytes, morvabs::AtomicFile::Access::keep);
  if (append && !copy_content(*bytes, file)) {
    return false;
  }
  return file.write(morvabs::to_utf8(text.get_ws())) && file.commit();
}
