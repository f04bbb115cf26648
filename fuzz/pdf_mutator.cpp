#include <array>
#include <string_view>
#include <vector>

#include <zlib.h>

#include "fuzz/mutators.h"

namespace fuzz {

namespace {

constexpr std::string_view packing = "/FlateDecode";
constexpr std::size_t largest = 256 << 10;

/// Bytes between "stream" and "endstream".
struct Place {
  std::size_t begin;
  std::size_t size;
};

std::vector<Place> packed_streams(std::string_view file) {
  std::vector<Place> places;
  std::size_t at = 0;
  while ((at = file.find(packing, at)) != std::string_view::npos) {
    auto const word = file.find("stream", at);
    auto const begin = file.find('\n', word);
    auto const end = file.find("endstream", begin);
    if (end == std::string_view::npos) {
      break;
    }
    places.push_back({begin + 1, end - begin - 1});
    at = end;
  }
  return places;
}

std::string inflated(std::string_view packed) {
  std::string content(largest, '\0');
  z_stream stream{};
  inflateInit(&stream);
  std::string input(packed);
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(content.data());
  stream.avail_out = static_cast<uInt>(content.size());
  inflate(&stream, Z_FINISH);
  content.resize(stream.total_out);
  inflateEnd(&stream);
  return content;
}

std::string deflated(std::string const& content) {
  uLongf size = compressBound(content.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<Bytef const*>(content.data()), content.size());
  packed.resize(size);
  return packed;
}

}  // namespace

std::optional<std::string> mutate_pdf(std::string const& input, std::size_t most, Random& random) {
  auto const streams = input.starts_with("%PDF") ? packed_streams(input) : std::vector<Place>{};
  if (streams.empty() || pick(random, 2) == 0) {
    return std::nullopt;
  }
  auto const [begin, size] = streams[pick(random, streams.size())];
  auto const content = inflated(std::string_view(input).substr(begin, size));
  auto packed = deflated(mutated(content, content.size() + 256));
  // Filled up, so that the table of objects stays right where it can.
  packed.resize(std::max(packed.size(), size), '\n');
  auto file = input;
  file.replace(begin, size, packed);
  return file.size() <= most ? std::optional(std::move(file)) : std::nullopt;
}

}  // namespace fuzz
