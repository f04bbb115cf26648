#include "hostkit/morvakit/zip_writer.h"

#include <stdexcept>

#include <zlib.h>

#include "hostkit/tessarine/memory_reader.h"

using test::little;

namespace {

std::string deflated(std::string_view content) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::runtime_error("deflate");
  }
  std::string input(content);
  std::string output(deflateBound(&stream, input.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(output.data());
  stream.avail_out = static_cast<uInt>(output.size());
  deflate(&stream, Z_FINISH);
  output.resize(stream.total_out);
  deflateEnd(&stream);
  return output;
}

std::uint32_t checksum(std::string_view content) {
  return static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<Bytef const*>(content.data()), static_cast<uInt>(content.size())));
}

}  // namespace

ZipWriter& ZipWriter::add(std::string_view name, std::string_view content) {
  return add(name, content, Options{});
}

ZipWriter& ZipWriter::add(std::string_view name, std::string_view content, Options const& options) {
  auto const packed = options.deflate ? deflated(content) : std::string(content);
  int const method = options.stated_method >= 0 ? options.stated_method : options.deflate ? 8 : 0;
  auto const sum = checksum(content) + (options.wrong_checksum ? 1 : 0);
  auto const common = little(20, 2) + little(options.encrypted ? 1 : 0, 2) +
                      little(static_cast<std::uint64_t>(method), 2) + little(0, 4) +
                      little(sum, 4) + little(packed.size(), 4) + little(content.size(), 4) +
                      little(name.size(), 2) + little(0, 2);
  directory_ += "PK\x01\x02" + little(20, 2) + common + little(0, 2 + 2 + 2) + little(0, 4) +
                little(parts_.size(), 4) + std::string(name);
  parts_ += "PK\x03\x04" + common + std::string(name) + packed;
  ++count_;
  return *this;
}

std::string ZipWriter::bytes() const {
  std::string end = "PK\x05\x06" + little(0, 4);
  if (count_ < 0xFFFF) {
    end += little(count_, 2) + little(count_, 2) + little(directory_.size(), 4) +
           little(parts_.size(), 4);
    return parts_ + directory_ + end + little(0, 2);
  }
  auto const large = "PK\x06\x06" + little(44, 8) + little(45, 2) + little(45, 2) + little(0, 8) +
                     little(count_, 8) + little(count_, 8) + little(directory_.size(), 8) +
                     little(parts_.size(), 8);
  auto const locator =
      "PK\x06\x07" + little(0, 4) + little(parts_.size() + directory_.size(), 8) + little(1, 4);
  return parts_ + directory_ + large + locator + end + std::string(12, '\xFF') + little(0, 2);
}
