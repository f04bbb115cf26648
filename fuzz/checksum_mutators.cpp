#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <string_view>

#include <zlib.h>

#include "hostkit/tessarine/memory_reader.h"

#include "fuzz/mutators.h"
#include "tessarine/byte_reader.h"

namespace fuzz {

namespace {

constexpr std::size_t block_size = 512;

/// Eight bytes of a header hold the sum of all, themselves taken as blanks.
void set_sum(std::string& file, std::size_t header) {
  constexpr std::size_t sum_place = 148;
  constexpr std::size_t sum_size = 8;
  std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(header + sum_place), sum_size, ' ');
  unsigned sum = 0;
  for (std::size_t i = 0; i < block_size; ++i) {
    sum += static_cast<unsigned char>(file[header + i]);
  }
  std::snprintf(file.data() + header + sum_place, sum_size, "%06o", sum);
}

bool is_tar_header(std::string_view block) {
  return block.substr(257, 5) == "ustar";
}

std::uint32_t checksum(std::string_view bytes) {
  return static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<Bytef const*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

}  // namespace

std::optional<std::string> mutate_tar(std::string const& input, std::size_t most) {
  if (input.size() < block_size || !is_tar_header(input)) {
    return std::nullopt;
  }
  auto file = mutated(input, most);
  for (std::size_t at = 0; at + block_size <= file.size(); at += block_size) {
    if (is_tar_header(std::string_view(file).substr(at))) {
      set_sum(file, at);
    }
  }
  return file;
}

std::optional<std::string> mutate_seven_zip(std::string const& input, std::size_t most) {
  constexpr std::size_t header_size = 32;
  constexpr std::string_view signature = "7z\xbc\xaf\x27\x1c";
  if (input.size() < header_size || !input.starts_with(signature)) {
    return std::nullopt;
  }
  auto file = mutated(input, most);
  if (file.size() < header_size) {
    return file;
  }
  auto const at = tessarine::little64(file, 12);
  auto const size = tessarine::little64(file, 20);
  if (at <= file.size() - header_size && size <= file.size() - header_size - at) {
    auto const directory = std::string_view(file).substr(header_size + at, size);
    file.replace(28, 4, test::little(checksum(directory), 4));
  }
  file.replace(8, 4, test::little(checksum(std::string_view(file).substr(12, 20)), 4));
  return file;
}

}  // namespace fuzz
