#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace morvakit {

/// How the members of an archive are laid out.
enum class ArchiveLayout {
  tar_or_file,  ///< TAR; what is none, is one file without a name
  rar,
  cabinet,
  cpio,
  ar,
  zip_headers,  ///< a ZIP without its directory, by the headers in front of the members
};

/// How the archive as a whole is packed.
enum class ArchivePacking { none, gzip, bzip2, zstd, lz4, xz };

/// What an archive says of a member.
struct ArchiveEntry {
  /// As it is stored, in UTF-8 where the format says so; empty for a file without a name.
  std::string name;
  /// Whether it is a file rather than a directory, a link or a device.
  bool is_file = false;
  bool is_encrypted = false;
  bool is_supported = true;  ///< whether it can be unpacked within bounds
};

/// The members of an archive in their order, unpacked in pieces. One layer of packing is taken off
/// and no more, and no layout but the one asked for is tried. Memory is bounded whatever the file
/// claims: 192 MiB for the dictionary of XZ, 256 MiB for the models of RAR, less for all others.
/// Names do not depend on the locale.
class ArchiveStream {
 public:
  ArchiveStream() = default;
  ArchiveStream(ArchiveStream const&) = delete;
  ArchiveStream& operator=(ArchiveStream const&) = delete;
  virtual ~ArchiveStream() = default;

  enum class Step {
    entry,
    end,
    damaged,
    encrypted,  ///< even the names need a password
  };
  /// Goes to the next member.
  virtual Step next(ArchiveEntry& entry) = 0;
  /// Unpacks up to `size` bytes of the member, holes as zeros. Returns their number, 0 at its end,
  /// -1 on a fault.
  virtual std::int64_t read(char* buffer, std::size_t size) = 0;
};

}  // namespace morvakit
