#pragma once

#include <cstdint>

#include "host/HString.h"
#include "host/export.h"

namespace Orlec {

/// Random access to the bytes of one document.
class MORVA_EXPORT Reader {
 public:
  virtual ~Reader();
  /// Reads up to `size` bytes at `offset` into `buffer`. Returns the number of bytes read, 0 at the
  /// end, -1 on failure. Reading past the end of a file that shrank is a short read, never a crash.
  virtual std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const = 0;
  /// Length in bytes, as it was when the document was opened.
  virtual std::int64_t GetSize() const = 0;
  /// The path the document was opened by.
  virtual HString const& GetPath() const = 0;
};

/// What can be asked of an opened file.
class MORVA_EXPORT IDescriptor {
 public:
  virtual ~IDescriptor();
  /// Length in bytes; 0 for a file that could not be opened.
  virtual long long GetLength() const = 0;
};

/// A file opened for parsing: a stack object of the caller, which outlives the parser made from it.
class MORVA_EXPORT IFile : public Reader, public IDescriptor {
 public:
  /// Opens a regular file. The second argument is reserved and is to be false. A file that cannot
  /// be opened gives an object that has no parser; `GetError` says why.
  IFile(HString const& path, bool reserved);
  ~IFile() override;
  IFile(IFile const&) = delete;
  IFile& operator=(IFile const&) = delete;

  /// The length when it was opened.
  long long GetLength() const override;
  /// What was appended to the file since it was opened is not seen.
  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override;
  /// The same as `GetLength`.
  std::int64_t GetSize() const override;
  /// The path as it was given, also where it could not be opened.
  HString const& GetPath() const override;

  /// Whether the file could be opened.
  bool IsOpen() const;
  /// The system's error number of the attempt to open, 0 where it succeeded.
  int GetError() const;

 private:
  HString path_;
  int descriptor_ = -1;
  int error_ = 0;
  std::int64_t size_ = 0;
};

}  // namespace Orlec
