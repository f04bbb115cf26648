#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"

#include "tessarine/zip_archive.h"

namespace tessarine {

/// An entry as the directory has it; every figure is only a claim.
struct ZipRecord {
  std::string_view name;
  std::uint64_t unpacked = 0;
  std::uint64_t packed = 0;
  std::uint64_t offset = 0;  ///< of the header in front of its data
  std::uint32_t checksum = 0;
  int method = 0;
  bool is_encrypted = false;
};

/// The directory at the end of a ZIP. Of several end records the last one counts whose directory
/// keeps the format's rules.
class ZipDirectory {
 public:
  /// Reads the directory; nothing is kept unless the answer is `open`. What all end records claim
  /// together is compared with the bounds before room is made for any.
  ZipState read(Orlec::Reader const& reader, ZipBounds bounds);

  std::vector<ZipRecord> const& records() const { return records_; }

 private:
  struct End;

  ZipState read_at(Orlec::Reader const& reader, std::string_view tail, std::size_t place,
                   std::uint64_t tail_offset, ZipBounds bounds);
  ZipState list(End const& end, ZipBounds bounds);

  std::string bytes_;  // what the names look at
  std::vector<ZipRecord> records_;
};

}  // namespace tessarine
