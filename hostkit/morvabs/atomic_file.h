#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "host/export.h"
#include "morvabs/temporary_file.h"

namespace morvabs {

/// Writes a file so that a crash leaves the old or the new content, whole: to a temporary beside
/// it, synced, and renamed over it by `commit`. Without `commit` nothing remains. Paths are bytes,
/// as `to_path` gives them. What stands at the path and is no regular file is never replaced.
///
/// A process that is killed leaves its temporary, and the next that writes in the directory removes
/// it (`make_temporary_file`), while those of writers that are alive stay.
class MORVA_EXPORT AtomicFile {
 public:
  enum class Access {
    keep,        ///< an existing file's owner and permissions, which the temporary gets once it is
                 ///< whole, else `new_file_permissions`; a symbolic link stays, the file behind it
                 ///< is replaced; one that leads to nothing (ENOENT), or to what has no path
                 ///< (EINVAL), as /dev/stdout may, stays too: that is a failure
    owner_only,  ///< `private_file_permissions`, from the first byte on; a symbolic link is
                 ///< replaced
  };

  AtomicFile(std::string path, Access access);
  ~AtomicFile();
  AtomicFile(AtomicFile const&) = delete;
  AtomicFile& operator=(AtomicFile const&) = delete;

  /// Appends bytes. False on failure; all later calls then fail too.
  bool write(std::string_view bytes);
  /// False, with the old file untouched and the temporary removed, when anything failed. That the
  /// directory cannot be synced is no failure: the file is in place.
  /// A file that is in place never throws: all that takes memory comes before.
  bool commit();
  /// The system's error number of the first failure, 0 without one. A call that fails leaves it in
  /// `errno` too, and the end of the object does not change that.
  int error() const { return error_; }

 private:
  /// Whose the replaced file is, and who may do what with it.
  struct Owner {
    uid_t user;
    gid_t group;
    mode_t mode;
  };

  bool open(Access access);
  bool hand_over();
  bool flush();
  bool fail(int error);
  void discard();

  std::string path_;
  std::optional<Owner> kept_;
  TemporaryFile temporary_;
  std::string buffer_;
  int error_ = 0;
};

/// Reads a whole regular file of at most `limit` bytes. False, with `content` empty and the reason
/// in `errno`, when it cannot be read or is larger (EFBIG).
MORVA_EXPORT bool read_file(std::string const& path, std::string& content, std::int64_t limit);

}  // namespace morvabs
