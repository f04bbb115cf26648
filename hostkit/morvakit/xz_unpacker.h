#pragma once

#include <memory>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Unpacks an XZ or LZIP file in pieces, all streams of it one behind the other. The file decides
/// on the size of its dictionary: one that takes more memory than 192 MiB ends the context.
class XzUnpacker {
 public:
  /// Both have to outlive the unpacker.
  XzUnpacker(Orlec::Reader const& reader, ReadContext& context);
  ~XzUnpacker();
  XzUnpacker(XzUnpacker const&) = delete;
  XzUnpacker& operator=(XzUnpacker const&) = delete;

  /// The next piece, valid until the next call; empty at the end and behind a fault.
  std::string_view next();
  bool has_failed() const;

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace morvakit
