#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Digest of a file's content.
class MORVA_EXPORT HFileMD5 {
 public:
  /// Puts the MD5 of the file's bytes into `md5` as 32 upper-case hexadecimal digits. False, with
  /// `md5` empty, when the file cannot be read.
  static bool get_file_md5(HString const& path, HString& md5);
};
