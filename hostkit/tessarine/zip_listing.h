#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"

namespace tessarine {

/// Names and short contents of the entries of a ZIP. Where the directory at the end is missing or
/// broken, the headers in front of the entries are followed as far as they go.
class ZipListing {
 public:
  /// The reader has to outlive the listing.
  explicit ZipListing(Orlec::Reader const& reader);
  ~ZipListing();
  ZipListing(ZipListing const&) = delete;
  ZipListing& operator=(ZipListing const&) = delete;

  /// Whether there is an entry of that name, ASCII case aside.
  bool has(std::string_view name) const;
  /// Whether an entry's name begins with `prefix`, ASCII case aside.
  bool has_below(std::string_view prefix) const;
  /// First bytes of an entry, `limit` at most; empty where it is missing or cannot be unpacked.
  std::string content(std::string_view name, std::int64_t limit) const;
  /// Whether the entry of that name can only be unpacked with a password.
  bool is_encrypted(std::string_view name) const;
  bool empty() const;

 private:
  struct State;
  struct Entry;

  bool list_directory();
  void follow_headers();
  Entry const* find(std::string_view name) const;

  std::unique_ptr<State> state_;
};

}  // namespace tessarine
