#include "morvakit/xz_unpacker.h"

#include <cstdint>
#include <string>
#include <vector>

#include <lzma.h>

namespace morvakit {

namespace {

constexpr std::uint64_t memory_limit = std::uint64_t{192} << 20;
constexpr std::size_t piece_size = std::size_t{64} << 10;

}  // namespace

struct XzUnpacker::Stream {
  Stream(Orlec::Reader const& whole, ReadContext& reading) : reader(whole), context(reading) {
    has_failed = lzma_auto_decoder(&lzma, memory_limit, LZMA_CONCATENATED) != LZMA_OK;
  }
  ~Stream() { lzma_end(&lzma); }
  Stream(Stream const&) = delete;
  Stream& operator=(Stream const&) = delete;

  void fill();

  Orlec::Reader const& reader;
  ReadContext& context;
  lzma_stream lzma = LZMA_STREAM_INIT;
  std::vector<std::uint8_t> packed = std::vector<std::uint8_t>(piece_size);
  std::vector<std::uint8_t> unpacked = std::vector<std::uint8_t>(piece_size);
  std::int64_t position = 0;
  lzma_action action = LZMA_RUN;
  bool is_at_end = false;
  bool has_failed = false;
};

void XzUnpacker::Stream::fill() {
  if (lzma.avail_in > 0 || action == LZMA_FINISH) {
    return;
  }
  auto const got = reader.ReadAt(position, packed.data(), static_cast<std::int64_t>(piece_size));
  has_failed = got < 0;
  if (got <= 0) {
    action = LZMA_FINISH;
    return;
  }
  position += got;
  lzma.next_in = packed.data();
  lzma.avail_in = static_cast<std::size_t>(got);
}

XzUnpacker::XzUnpacker(Orlec::Reader const& reader, ReadContext& context)
    : stream_(std::make_unique<Stream>(reader, context)) {}

XzUnpacker::~XzUnpacker() = default;

bool XzUnpacker::has_failed() const {
  return stream_->has_failed;
}

std::string_view XzUnpacker::next() {
  auto& stream = *stream_;
  stream.lzma.next_out = stream.unpacked.data();
  stream.lzma.avail_out = piece_size;
  while (stream.lzma.avail_out == piece_size && !stream.is_at_end && !stream.has_failed) {
    stream.fill();
    auto const result = lzma_code(&stream.lzma, stream.action);
    stream.is_at_end = result == LZMA_STREAM_END;
    if (result == LZMA_MEMLIMIT_ERROR) {
      stream.context.end(Orlec::ParseOutcome::limit_reached,
                         "a dictionary over " + std::to_string(memory_limit) + " bytes");
    }
    stream.has_failed = stream.has_failed || !stream.context.keep_going() ||
                        (result != LZMA_OK && result != LZMA_STREAM_END);
  }
  return {reinterpret_cast<char const*>(stream.unpacked.data()),
          piece_size - stream.lzma.avail_out};
}

}  // namespace morvakit
