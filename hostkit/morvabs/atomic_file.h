#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/export.h"

namespace morvabs {

/// Writes a file so that a crash leaves the old or the new content, whole: to a temporary beside
/// it, synced, and renamed over it by `commit`. Without `commit` nothing remains. Paths are bytes,
/// as `to_path` gives them. What stands at the path and is no regular file is never replaced.
class MORVA_EXPORT AtomicFile {
 public:
  enum class Access {
    keep,        ///< an existing file's permissions, else those of the process's umask; a symbolic
                 ///< link stays, the file behind it is replaced
    owner_only,  ///< 0600, from the first byte on; a symbolic link is replaced
  };

  AtomicFile(std::string path, Access access);
  ~AtomicFile();
  AtomicFile(AtomicFile const&) = delete;
  AtomicFile& operator=(AtomicFile const&) = delete;

  /// Appends bytes. False on failure; all later calls then fail too.
  bool write(std::string_view bytes);
  /// False, with the old file untouched and the temporary removed, when anything failed.
  bool commit();
  /// The system's error number of the first failure, 0 without one.
  int error() const { return error_; }

 private:
  bool open(Access access);
  bool flush();
  bool fail(int error);
  void discard();

  std::string path_;
  std::string temporary_path_;
  std::string buffer_;
  int descriptor_ = -1;
  int error_ = 0;
};

/// Reads a whole regular file of at most `limit` bytes. False, with `content` empty, when it cannot
/// be read or is larger.
MORVA_EXPORT bool read_file(std::string const& path, std::string& content, std::int64_t limit);

}  // namespace morvabs
