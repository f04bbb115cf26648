#include "morvakit/ppt/ppt_object.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <zlib.h>

#include "morvakit/embedded.h"
#include "morvakit/spool.h"

namespace morvakit {

namespace {

/// Takes the packing off bytes that come in pieces.
class Unpacker {
 public:
  Unpacker() {
    if (inflateInit(&stream_) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~Unpacker() { inflateEnd(&stream_); }
  Unpacker(Unpacker const&) = delete;
  Unpacker& operator=(Unpacker const&) = delete;

  /// What to unpack next; valid until it is used up.
  void put(std::string& piece) {
    stream_.next_in = reinterpret_cast<Bytef*>(piece.data());
    stream_.avail_in = static_cast<uInt>(piece.size());
  }
  bool needs_input() const { return stream_.avail_in == 0; }
  /// The next unpacked bytes; empty at the end, on a fault, and where more input is needed.
  std::string_view take() {
    stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
    stream_.avail_out = static_cast<uInt>(buffer_.size());
    status_ = inflate(&stream_, Z_NO_FLUSH);
    if (status_ == Z_MEM_ERROR) {
      throw std::bad_alloc();
    }
    return {buffer_.data(), buffer_.size() - stream_.avail_out};
  }
  bool is_done() const { return status_ == Z_STREAM_END; }
  bool is_broken() const {
    return status_ != Z_OK && status_ != Z_STREAM_END && status_ != Z_BUF_ERROR;
  }

 private:
  z_stream stream_{};
  int status_ = Z_OK;
  std::vector<char> buffer_ = std::vector<char>(64 << 10);
};

/// Unpacks an object as far as it goes. False when a bound is passed, which is noted.
bool unpack(PptStream& stream, PptRecord const& record, Spool& spool) {
  constexpr std::int64_t head_size = 4;
  constexpr std::int64_t piece_size = 64 << 10;
  auto& context = stream.context();
  Unpacker unpacker;
  std::string piece;
  for (auto offset = head_size; !unpacker.is_done() && !unpacker.is_broken();) {
    if (unpacker.needs_input()) {
      piece = stream.content(record, offset, piece_size);
      offset += static_cast<std::int64_t>(piece.size());
      unpacker.put(piece);
    }
    auto const bytes = unpacker.take();
    auto const added = static_cast<std::int64_t>(bytes.size());
    if (!context.charge_expansion(record.size, spool.GetSize() + added, added) ||
        !spool.append(bytes)) {
      return false;
    }
    if (bytes.empty() && piece.empty()) {
      break;
    }
  }
  // Some writers leave out the end of the packed bytes.
  if (!unpacker.is_done() && spool.GetSize() < std::int64_t{stream.number(record, 0)}) {
    context.note(Orlec::ParseOutcome::incomplete, "an embedded object cannot be unpacked");
  }
  return true;
}

}  // namespace

bool read_embedded_object(PptStream& stream, PptRecord const& record, std::string_view name) {
  constexpr std::uint16_t is_packed = 1;
  auto& context = stream.context();
  if (record.instance != is_packed) {
    return read_embedded(ReaderSlice(stream.bytes(), name, record.offset, record.size), context);
  }
  Spool spool(name, context);
  return unpack(stream, record, spool) ? read_embedded(spool, context) : context.keep_going();
}

}  // namespace morvakit
