#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"

#include "tessarine/zip_archive.h"

namespace tessarine {

/// Names and short contents of the entries of a ZIP. Where the directory at the end is missing or
/// broken, or claims too much, the headers in front of the entries are followed as far as they go.
class ZipListing {
 public:
  /// The reader has to outlive the listing.
  explicit ZipListing(Orlec::Reader const& reader);

  /// Whether there is an entry of that name, ASCII case aside.
  bool has(std::string_view name) const;
  /// Whether an entry's name begins with `prefix`, ASCII case aside.
  bool has_below(std::string_view prefix) const;
  /// First bytes of an entry, `limit` at most; empty where it is missing or cannot be unpacked.
  std::string content(std::string_view name, std::int64_t limit) const;
  /// Whether the entry of that name can only be unpacked with a password.
  bool is_encrypted(std::string_view name) const;

 private:
  struct Entry {
    std::string name;  // in the form that names are compared by
    bool encrypted = false;
    std::int64_t index = -1;  // in the directory; -1 where the entry was found by its own header
    std::int64_t offset =
        0;  // of the data of an entry that is stored as it is, found by its header
    std::int64_t stored = 0;  // length of that data; 0 for packed data
  };

  void list_directory();
  void follow_headers();
  Entry const* find(std::string_view name) const;

  Orlec::Reader const& reader_;
  ZipArchive archive_;
  std::vector<Entry> entries_;
};

}  // namespace tessarine
