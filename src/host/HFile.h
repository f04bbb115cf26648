#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Files and directories by path, as static operations. None of them throws; a failure is a false
/// result, a length of 0 or an empty text. Where something could not be made, written or removed,
/// `errno` tells why.
///
/// What is made can be read and written as the umask has it, but never written by everyone: a
/// umask of 0 gives 0664 and 0775.
class MORVA_EXPORT HFile {
 public:
  /// True when anything exists at the path (symbolic links are followed).
  static bool IsFileExist(HString const& path);
  /// True when a regular file is there, or a link to one.
  static bool IsFileExistFile(HString const& path);
  /// True when a directory is there, or a link to one.
  static bool IsFileExistDir(HString const& path);

  /// Makes the directory and its missing parents. True when it exists afterwards.
  static bool make_dir(HString const& path);
  /// Removes the directory if it is empty; true when it was removed.
  static bool del_empty_dir(HString const& path);
  /// Removes the file (never a directory); true when it was removed.
  static bool delete_file(HString const& path);
  /// Creates an empty file, and its missing parent directories, if nothing exists at the path.
  static bool touch(HString const& path);
  /// Length in bytes; 0 where there is no regular file.
  static long long GetFileLen(HString const& path);

  /// Reads the whole file as text into `text`: by byte-order mark, else as UTF-8 where it is valid,
  /// else by detection (GB18030, Big5, UTF-16, Shift-JIS, EUC, Latin). A mark is not part of the
  /// text. False, with `text` empty, when the file cannot be read or is larger than 1 GiB.
  static bool GetFileContentAny(HString const& path, HString& text);
  /// Writes the text as UTF-8, replacing the file or appending to it. The third argument is
  /// reserved and is to be false. The new content is written beside the file, synced and renamed
  /// over it: a crash leaves the old or the new file, whole. An existing file keeps its
  /// permissions.
  static bool write_to_file(HString const& path, HString const& text, bool reserved, bool append);
};
