#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/archive/lzma_unpacker.h"
#include "morvakit/parse_watch.h"

namespace morvakit {

/// The unpacker of the archive component. The reader and the watch have to outlive it.
class LzmaStream : public LzmaUnpacker {
 public:
  /// An XZ or LZIP file, all streams of it one behind the other.
  LzmaStream(Orlec::Reader const& file, ParseWatch& watch);
  /// Bare data of a container, as `open_lzma` has them.
  LzmaStream(Orlec::Reader const& data, ParseWatch& watch, std::vector<LzmaStep> const& steps,
             std::int64_t unpacked);
  ~LzmaStream() override;

  std::string_view next() override;
  bool has_failed() const override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace morvakit
