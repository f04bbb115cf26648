#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// One step of unpacking that the LZMA library knows.
struct LzmaStep {
  enum class Method { lzma, lzma2, delta, x86, powerpc, itanium, arm, arm_thumb, sparc };

  Method method = Method::lzma;
  /// As the container stores them.
  std::string properties;
};

/// Unpacks data of the LZMA family in pieces. The file decides on the size of its dictionary: one
/// that takes more memory than 192 MiB ends the parse.
class LzmaUnpacker {
 public:
  LzmaUnpacker() = default;
  LzmaUnpacker(LzmaUnpacker const&) = delete;
  LzmaUnpacker& operator=(LzmaUnpacker const&) = delete;
  virtual ~LzmaUnpacker() = default;

  /// The next piece, valid until the next call; empty at the end and behind a fault.
  virtual std::string_view next() = 0;
  virtual bool has_failed() const = 0;
};

}  // namespace morvakit
