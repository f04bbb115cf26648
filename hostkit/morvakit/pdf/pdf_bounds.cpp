#include "morvakit/pdf/pdf_bounds.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include <Dict.h>
#include <Stream.h>

#include "morvakit/pdf/pdf_maps.h"
#include "morvakit/pdf/pdf_objects.h"

namespace morvakit {

namespace {

/// Bytes that the stream has in the file, whatever it states.
std::int64_t bytes_in_file(Object const& stream) {
  return std::max<std::int64_t>(stream.getStream()->getBaseStream()->getLength(), 1);
}

/// What one byte unpacks to at the most; 0 for what is no packing.
std::int64_t most_of_one_byte(StreamKind kind) {
  switch (kind) {
    case strFlate:
      return 1100;
    case strLZW:
      return 2600;
    case strRunLength:
      return 64;
    case strASCII85:
      return 4;
    case strASCIIHex:
      return 1;
    default:
      return 0;
  }
}

/// Whether it cannot unpack to more than what is harmless.
bool is_small(Object const& stream, std::int64_t harmless) {
  // A row of a table that ends early is filled up, however long it is said to be.
  auto const& dictionary = *stream.streamGetDict();
  if (dictionary.hasKey("DecodeParms") || dictionary.hasKey("DP")) {
    return false;
  }
  int packings = 0;
  std::int64_t most = 1;
  for (auto const* layer = stream.getStream(); layer != nullptr; layer = layer->getNextStream()) {
    if (auto const of_layer = most_of_one_byte(layer->getKind()); of_layer > 0) {
      ++packings;
      most = of_layer;
    }
  }
  return packings <= 1 && bytes_in_file(stream) <= harmless / most;
}

std::int64_t positive(Object const& dictionary, char const* key) {
  auto const number = dictionary.streamGetDict()->lookup(key);
  return number.isInt() ? std::max(number.getInt(), 1) : 1;
}

}  // namespace

bool PdfBounds::is_no_picture(Object const& stream) {
  if (!is_packed_as_picture(stream)) {
    return true;
  }
  sink_.end(Orlec::ParseOutcome::damaged, "what pages are drawn with is packed as a picture");
  return false;
}

bool PdfBounds::is_bounded(Object const& stream) {
  constexpr std::int64_t harmless = std::int64_t{64} << 20;
  if (!stream.isStream()) {
    return true;
  }
  if (!is_no_picture(stream)) {
    return false;
  }
  if (is_small(stream, harmless)) {
    return true;
  }
  auto const packed = bytes_in_file(stream);
  std::int64_t unpacked = 0;
  bool is_bounded = true;
  read_pdf_stream(stream, [&](std::string_view bytes) {
    auto const added = static_cast<std::int64_t>(bytes.size());
    unpacked += added;
    is_bounded = sink_.charge_expansion(packed, unpacked, added) && sink_.keep_going();
    return is_bounded;
  });
  return is_bounded;
}

bool PdfBounds::is_sound_map(Object const& stream) {
  constexpr std::size_t longest = std::size_t{16} << 20;
  if (!stream.isStream()) {
    return true;
  }
  if (!is_no_picture(stream)) {
    return false;
  }
  std::string map;
  read_pdf_stream(stream, [&](std::string_view bytes) {
    map += bytes;
    return map.size() <= longest && sink_.keep_going();
  });
  if (map.size() > longest || !is_character_map_sound(map)) {
    sink_.end(Orlec::ParseOutcome::limit_reached, "a map of too many characters");
    return false;
  }
  return sink_.keep_going();
}

bool PdfBounds::is_sound_shading(Object const& shading) {
  constexpr std::int64_t most_memory = std::int64_t{256} << 20;
  if (!shading.isStream()) {
    return true;
  }
  if (!is_no_picture(shading)) {
    return false;
  }
  auto const type = positive(shading, "ShadingType");
  auto const place = 2 * positive(shading, "BitsPerCoordinate");
  auto const color = positive(shading, "BitsPerComponent");
  // What a piece takes in the stream at the least, and in memory. A patch may share a side.
  bool const is_patch = type >= 6;
  auto const bits = is_patch ? 8 * place + 2 * color : place + color;
  auto const memory = is_patch ? 1300 : 150;
  std::int64_t taken = 0;
  read_pdf_stream(shading, [&](std::string_view bytes) {
    taken += static_cast<std::int64_t>(bytes.size()) * 8 / bits * memory;
    return taken <= most_memory && sink_.keep_going();
  });
  if (taken > most_memory) {
    sink_.end(Orlec::ParseOutcome::limit_reached, "a shading of too many pieces");
    return false;
  }
  return sink_.keep_going();
}

}  // namespace morvakit
