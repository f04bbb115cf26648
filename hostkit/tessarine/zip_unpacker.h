#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace tessarine {

/// Takes off the packing of one entry, piece by piece.
class ZipUnpacker {
 public:
  ZipUnpacker() = default;
  ZipUnpacker(ZipUnpacker const&) = delete;
  ZipUnpacker& operator=(ZipUnpacker const&) = delete;
  virtual ~ZipUnpacker() = default;

  enum class Step {
    more,
    end,  ///< what is left of the input is not part of the entry
    damaged,
  };
  /// Unpacks what it can. What was taken is cut off the front of the input, what was made off the
  /// front of the room; both may be empty.
  virtual Step unpack(std::span<char const>& input, std::span<char>& room) = 0;
};

/// An unpacker for a method of the format; null for one that is not known here. Only methods are
/// known whose memory does not depend on what the entry claims: at most 4 MB.
std::unique_ptr<ZipUnpacker> make_zip_unpacker(int method);

/// The checksum of an entry's bytes, of which those that `before` is the checksum of, 0 for none,
/// stand in front.
std::uint32_t zip_checksum(std::uint32_t before, std::span<char const> bytes);

/// Whether there is such an unpacker.
bool is_known_zip_method(int method);

}  // namespace tessarine
