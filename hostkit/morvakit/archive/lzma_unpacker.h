#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// One step of unpacking that the LZMA library knows.
struct LzmaStep {
  enum class Method { lzma, lzma2, delta, x86, powerpc, itanium, arm, arm_thumb, sparc };

  Method method = Method::lzma;
  /// As the container stores them.
  std::string properties;
};

/// Unpacks data of the LZMA family in pieces. The file decides on the size of its dictionary: one
/// that takes more memory than 192 MiB ends the context.
class LzmaUnpacker {
 public:
  /// An XZ or LZIP file, all streams of it one behind the other. Both have to outlive the unpacker,
  /// here and below.
  LzmaUnpacker(Orlec::Reader const& file, ReadContext& context);
  /// Bare data of a container, which unpacks to `unpacked` bytes by `steps`, the first of them
  /// first.
  LzmaUnpacker(Orlec::Reader const& data, ReadContext& context, std::vector<LzmaStep> const& steps,
               std::int64_t unpacked);
  ~LzmaUnpacker();
  LzmaUnpacker(LzmaUnpacker const&) = delete;
  LzmaUnpacker& operator=(LzmaUnpacker const&) = delete;

  /// The next piece, valid until the next call; empty at the end and behind a fault.
  std::string_view next();
  bool has_failed() const;

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace morvakit
