#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One "key = value" line of an INI file.
struct HIniKey {
  /// Name of the key, decoded.
  HString str_key;
  /// Its value, decoded; empty where there is none.
  HString str_value;
  /// The comment lines in front of it, as they stand in the file.
  HString str_comment;
};

/// One section of an INI file with its keys in file order.
struct HIniSection {
  /// Name of the section, decoded; empty for keys in front of the first one.
  HString str_name;
  /// The keys of the section, in file order.
  std::vector<HIniKey> vt_key;
  /// The comment lines in front of it, as they stand in the file.
  HString str_comment;
};

/// An INI file as a list of sections that a caller reads, changes and writes back.
///
/// Names are case-sensitive. Comments, other sections and other keys survive every rewrite. A name
/// or value that INI syntax cannot hold (a line break, a bracket in a section name, blanks at an
/// end) is stored percent-encoded and read back as it was. Files are replaced atomically.
///
/// A file of more than 8 MiB, with more than 100,000 sections and keys, or with a section name of
/// more than 4 KiB counts as one that cannot be read, and none is written: looking into a hostile
/// one takes neither minutes nor gigabytes.
class MORVA_EXPORT HIniFileHelper {
 public:
  /// The file is UTF-8, the only encoding there is; kept for callers that set it.
  bool mb_utf8 = false;
  /// What `read_all` found and `write_all` writes.
  std::vector<HIniSection> vt_section;

  HIniFileHelper();
  ~HIniFileHelper();

  /// Binds the object to a file, which need not exist.
  void setFile(HString const& path);
  /// Fetches one value. False, with `value` untouched, when the file has no such section or key.
  bool read_string(HString const& section, HString const& key, HString& value) const;
  /// Sets one value in the file, at once; the section and the key are made where they are missing.
  /// The section list of this object stays as it is. False, with the file untouched and the reason
  /// in `errno`, on failure.
  bool write_string(HString const& section, HString const& key, HString const& value);
  /// Loads the whole file into the section list; if it cannot: false, no sections, and `errno`.
  bool read_all();
  /// Replaces the file by the section list. False, with the file untouched and the reason in
  /// `errno`, on failure, and where the last `read_all` could not read what is there, so that it is
  /// not lost.
  bool write_all();

 private:
  HString path_;
  HString trailing_comment_;  // the comment lines behind the last key
  int unread_ = 0;            // why `read_all` could not read the file that there is
};
