#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One entry that a directory walk reports.
struct HDirSnapEntry {
  /// The path, beginning with that of the walk.
  HString str_path;
  /// Its last step alone.
  HString str_name;
  /// It is a directory, or a link to one.
  bool mb_dir = false;
  /// Tells the callback to pass over the entry: it is neither a regular file nor a directory.
  bool mb_skip = false;
};

/// Receives the entries of a directory walk.
class MORVA_EXPORT HDirSnapCallback {
 public:
  virtual ~HDirSnapCallback();
  /// Called once per entry. 0 goes on with the walk, any other value ends it.
  virtual int on_snap_file(HDirSnapEntry const& entry) = 0;
};

/// Walks a directory and reports its entries in code-point order of their names, what a
/// subdirectory holds right behind it. Symbolic links to directories are reported but not entered,
/// and the walk goes at most 128 levels deep.
class MORVA_EXPORT HDirSnap {
 public:
  /// Goes into subdirectories.
  bool mb_recursive = false;

  HDirSnap();
  ~HDirSnap();

  /// The callback stays the caller's. With false, only directories are reported; with true, files
  /// too.
  void set_callback(HDirSnapCallback* callback, bool with_files);
  /// Where the walk begins: a directory, or a regular file.
  void set_file(HString const& path);
  /// Walks. A path that does not exist reports nothing, a regular file reports itself.
  void snap();

 private:
  bool report_directory(HString const& path, int depth);

  HDirSnapCallback* callback_ = nullptr;
  bool with_files_ = false;
  HString path_;
};
