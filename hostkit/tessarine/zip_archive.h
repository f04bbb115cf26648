#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "host/export.h"

namespace tessarine {

/// What names of ZIP entries are compared by, where they need not be equal to the byte: ASCII
/// letters in lower case, "/" between the parts, and none in front.
MORVA_EXPORT std::string zip_name_key(std::string_view name);

/// How far the directory of a ZIP is believed.
struct ZipBounds {
  std::uint64_t entries = 20000;
  /// Of all directories together that the end of the file offers.
  std::uint64_t directory_bytes = std::uint64_t{64} << 20;
};

enum class ZipState {
  open,
  no_directory,
  too_many_entries,
  directory_too_large,
  damaged,
  unreadable,  ///< the reader failed
};

/// Why an entry cannot be unpacked.
enum class ZipFault {
  none,
  damaged,
  unsupported,  ///< packed by a method that is not known here
  encrypted,
};

/// What the directory says of an entry.
struct ZipEntry {
  /// As it is stored. Valid as long as the archive.
  std::string_view name;
  /// In bytes. The unpacked size is only a claim; the packed one is never larger than the file.
  std::int64_t unpacked = 0;
  std::int64_t packed = 0;
  /// The number that the format gives to the way of packing.
  int method = 0;
  bool is_supported = false;  ///< whether that way is known here
  bool is_encrypted = false;
};

/// An entry that is being unpacked. The archive has to outlive it.
class MORVA_EXPORT ZipPart {
 public:
  ~ZipPart();
  ZipPart(ZipPart&& other) noexcept;
  ZipPart& operator=(ZipPart&& other) noexcept;
  ZipPart(ZipPart const&) = delete;
  ZipPart& operator=(ZipPart const&) = delete;

  /// Unpacks up to `size` bytes into `buffer`. Returns their number, 0 at the end, and -1 on a
  /// fault, which `fault` then tells. A wrong checksum is a fault behind the last byte.
  std::int64_t read(char* buffer, std::size_t size);
  /// `none` until something went wrong, which it may have at once.
  ZipFault fault() const { return fault_; }

 private:
  friend class ZipArchive;
  struct Stream;
  ZipPart(std::unique_ptr<Stream> stream, ZipFault fault);

  std::unique_ptr<Stream> stream_;
  ZipFault fault_;
};

/// A ZIP that is read by its directory, in pieces: nothing is mapped into memory or written to
/// disk.
class MORVA_EXPORT ZipArchive {
 public:
  /// Reads the directory. What it claims to hold is checked before any room is made for it. The
  /// reader has to outlive the archive.
  ZipArchive(Orlec::Reader const& reader, ZipBounds bounds);
  ~ZipArchive();
  ZipArchive(ZipArchive const&) = delete;
  ZipArchive& operator=(ZipArchive const&) = delete;

  ZipState state() const { return state_; }
  /// Number of entries; 0 unless the state is `open`.
  std::uint64_t count() const;
  /// An entry by its place in the directory; one without a name outside it.
  ZipEntry entry(std::uint64_t index) const;
  /// Begins to unpack an entry. Where that is not possible the part has a fault.
  ZipPart open(std::uint64_t index) const;

 private:
  struct Archive;

  std::unique_ptr<Archive> archive_;
  ZipState state_;
};

}  // namespace tessarine
