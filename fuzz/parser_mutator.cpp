#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/mutators.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace fuzz {

std::string mutated(std::string bytes, std::size_t most) {
  auto const size = std::min(bytes.size(), most);
  bytes.resize(std::max<std::size_t>(most, 1));
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), size, bytes.size()));
  return bytes;
}

std::size_t pick(Random& random, std::size_t count) {
  return random() % count;
}

namespace {

std::optional<std::string> mutate_content(std::string const& input, std::size_t most,
                                          Random& random) {
  if (auto changed = mutate_zip(input, most, random)) {
    return changed;
  }
  if (auto changed = mutate_ole(input, random)) {
    return changed;
  }
  if (auto changed = mutate_pdf(input, most, random)) {
    return changed;
  }
  if (auto changed = mutate_seven_zip(input, most)) {
    return changed;
  }
  if (auto changed = mutate_tar(input, most)) {
    return changed;
  }
  return mutate_packed(input, most);
}

std::size_t put(std::string const& bytes, std::uint8_t* data, std::size_t most) {
  auto const size = std::min(bytes.size(), most);
  std::memcpy(data, bytes.data(), size);
  return size;
}

/// The beginning of one and the end of the other.
std::string spliced(std::string const& input, std::string const& other, Random& random) {
  return input.substr(0, pick(random, input.size() + 1)) +
         other.substr(pick(random, other.size() + 1));
}

}  // namespace

}  // namespace fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  constexpr std::size_t changes_of_bytes = 6;  // one in so many
  fuzz::Random random(seed);
  if (fuzz::pick(random, changes_of_bytes) != 0) {
    std::string const input(reinterpret_cast<char const*>(data), size);
    if (auto const changed = fuzz::mutate_content(input, most, random)) {
      return fuzz::put(*changed, data, most);
    }
  }
  return LLVMFuzzerMutate(data, size, most);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(std::uint8_t const* data, std::size_t size,
                                                 std::uint8_t const* other_data,
                                                 std::size_t other_size, std::uint8_t* out,
                                                 std::size_t most, unsigned seed) {
  fuzz::Random random(seed);
  std::string const input(reinterpret_cast<char const*>(data), size);
  std::string const other(reinterpret_cast<char const*>(other_data), other_size);
  auto const crossed = fuzz::cross_zips(input, other, most, random);
  return fuzz::put(crossed ? *crossed : fuzz::spliced(input, other, random), out, most);
}
