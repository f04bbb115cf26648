#include "host/Orlec/IFile.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

#include "host/native_path.h"
#include "morvabs/file_access.h"

namespace Orlec {

Reader::~Reader() = default;

IDescriptor::~IDescriptor() = default;

IFile::IFile(HString const& path, bool /*reserved*/) : path_(path) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    error_ = ENOENT;
    return;
  }
  morvabs::OpenedFile file = morvabs::open_regular_file(*bytes);
  error_ = file.error;
  size_ = file.size;
  descriptor_ = file.descriptor.release();
}

IFile::~IFile() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

long long IFile::GetLength() const {
  return size_;
}

std::int64_t IFile::ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const {
  if (descriptor_ < 0 || offset < 0 || size < 0) {
    return -1;
  }
  // The file is what it was when it was opened: what was appended since is not seen.
  std::int64_t const available = std::max<std::int64_t>(size_ - offset, 0);
  return morvabs::read_bytes_at(descriptor_, static_cast<char*>(buffer), std::min(size, available),
                                offset);
}

std::int64_t IFile::GetSize() const {
  return size_;
}

HString const& IFile::GetPath() const {
  return path_;
}

bool IFile::IsOpen() const {
  return descriptor_ >= 0;
}

int IFile::GetError() const {
  return error_;
}

}  // namespace Orlec
