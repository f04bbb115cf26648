#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

#include "host/export.h"

namespace morvabs {

/// An open file descriptor that is closed at the end of its scope.
class MORVA_EXPORT FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor();
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;

  int get() const { return descriptor_; }
  bool is_open() const { return descriptor_ >= 0; }
  /// Hands the descriptor over to the caller.
  int release();

 private:
  int descriptor_ = -1;
};

/// A regular file opened for reading, and what was known of it at that moment.
struct OpenedFile {
  FileDescriptor descriptor;
  std::int64_t size = 0;
  mode_t mode = 0;
  /// The system's error number where the file could not be opened: EISDIR for a directory, EINVAL
  /// for anything else that is no regular file.
  int error = 0;
};

/// Opens without ever waiting: a pipe or device is refused, not waited for. The file that was
/// handed over last is found under its path.
OpenedFile open_regular_file(std::string const& path);

/// For a process that cannot open its input itself: `open_regular_file` gives this file for the
/// path from now on, each time from its beginning, and instead of what was handed over before;
/// where `error` is not 0, it fails with that. What is opened twice shares its position. Not while
/// other threads open files.
void hand_over_file(std::string path, FileDescriptor file, int error);

/// A new file without a name, for reading and writing, which is gone with its last user whatever
/// happens; not open where none can be made.
MORVA_EXPORT FileDescriptor open_unnamed_file();

/// For a process that cannot open files itself: such files come from `ask` from now on.
void ask_for_unnamed_files(FileDescriptor (*ask)());

/// Reads up to `size` bytes from the current position, taking up again after a signal. Less than
/// asked for only at the end; -1 on failure.
std::int64_t read_bytes(int descriptor, char* buffer, std::int64_t size);

/// The same at a given offset.
std::int64_t read_bytes_at(int descriptor, char* buffer, std::int64_t size, std::int64_t offset);

}  // namespace morvabs
