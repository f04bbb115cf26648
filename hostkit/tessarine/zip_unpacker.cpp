#include "tessarine/zip_unpacker.h"

#include <algorithm>
#include <limits>
#include <new>

#include <bzlib.h>
#include <zlib.h>

namespace tessarine {
namespace {

constexpr int stored = 0;
constexpr int deflated = 8;
constexpr int bzip2 = 12;

class StoredUnpacker : public ZipUnpacker {
 public:
  Step unpack(std::span<char const>& input, std::span<char>& room) override {
    auto const size = std::min(input.size(), room.size());
    std::copy_n(input.begin(), size, room.begin());
    input = input.subspan(size);
    room = room.subspan(size);
    return Step::more;
  }
};

/// Lets a library's stream, whose counters are all alike, work on the spans.
template <typename Stream, typename Work>
auto work_on(Stream& stream, std::span<char const>& input, std::span<char>& room, Work work) {
  using Count = decltype(stream.avail_in);
  auto const count = [](std::size_t size) {
    return static_cast<Count>(std::min<std::size_t>(size, std::numeric_limits<Count>::max()));
  };
  // The libraries only read from it.
  stream.next_in = reinterpret_cast<decltype(stream.next_in)>(const_cast<char*>(input.data()));
  stream.avail_in = count(input.size());
  stream.next_out = reinterpret_cast<decltype(stream.next_out)>(room.data());
  stream.avail_out = count(room.size());
  auto const result = work(&stream);
  input = input.subspan(count(input.size()) - stream.avail_in);
  room = room.subspan(count(room.size()) - stream.avail_out);
  return result;
}

class DeflateUnpacker : public ZipUnpacker {
 public:
  DeflateUnpacker() {
    constexpr int window_bits_without_header = -15;
    if (inflateInit2(&stream_, window_bits_without_header) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~DeflateUnpacker() override { inflateEnd(&stream_); }

  Step unpack(std::span<char const>& input, std::span<char>& room) override {
    auto const result =
        work_on(stream_, input, room, [](z_stream* stream) { return inflate(stream, Z_NO_FLUSH); });
    if (result == Z_MEM_ERROR) {
      throw std::bad_alloc();
    }
    if (result == Z_STREAM_END) {
      return Step::end;
    }
    return result == Z_OK || result == Z_BUF_ERROR ? Step::more : Step::damaged;
  }

 private:
  z_stream stream_{};
};

class Bzip2Unpacker : public ZipUnpacker {
 public:
  Bzip2Unpacker() {
    if (BZ2_bzDecompressInit(&stream_, 0, 0) != BZ_OK) {
      throw std::bad_alloc();
    }
  }
  ~Bzip2Unpacker() override { BZ2_bzDecompressEnd(&stream_); }

  Step unpack(std::span<char const>& input, std::span<char>& room) override {
    auto const result = work_on(stream_, input, room, BZ2_bzDecompress);
    if (result == BZ_MEM_ERROR) {
      throw std::bad_alloc();
    }
    if (result == BZ_STREAM_END) {
      return Step::end;
    }
    return result == BZ_OK ? Step::more : Step::damaged;
  }

 private:
  bz_stream stream_{};
};

}  // namespace

std::unique_ptr<ZipUnpacker> make_zip_unpacker(int method) {
  switch (method) {
    case stored:
      return std::make_unique<StoredUnpacker>();
    case deflated:
      return std::make_unique<DeflateUnpacker>();
    case bzip2:
      return std::make_unique<Bzip2Unpacker>();
    default:
      return nullptr;
  }
}

std::uint32_t zip_checksum(std::uint32_t before, std::span<char const> bytes) {
  auto const sum = crc32_z(before, reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
  return static_cast<std::uint32_t>(sum);
}

bool is_known_zip_method(int method) {
  return method == stored || method == deflated || method == bzip2;
}

}  // namespace tessarine
