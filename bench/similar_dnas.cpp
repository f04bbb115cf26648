#include "similar_dnas.h"

#include <array>
#include <cstdint>
#include <random>

namespace bench {

namespace {

using Bits = std::array<std::uint64_t, 2>;

constexpr std::size_t bits = 128;
constexpr std::size_t in_cluster = 100;
constexpr std::uint64_t low_bits = 0x1111111111111111U;

HString text_of(Bits const& dna) {
  std::wstring text;
  for (std::uint64_t const word : dna) {
    for (int shift = 60; shift >= 0; shift -= 4) {
      text.push_back(L"0123456789ABCDEF"[word >> shift & 15U]);
    }
  }
  return text.c_str();
}

Bits flipped(Bits dna, std::size_t count, std::mt19937_64& random) {
  Bits done{};
  while (count > 0) {
    std::size_t const bit = random() % bits;
    std::uint64_t const mask = std::uint64_t{1} << bit % 64;
    if ((done[bit / 64] & mask) == 0) {
      done[bit / 64] |= mask;
      dna[bit / 64] ^= mask;
      --count;
    }
  }
  return dna;
}

Bits next(DnaKind kind, std::vector<Bits> const& dnas, std::mt19937_64& random) {
  switch (kind) {
    case DnaKind::planted:
      if (dnas.size() % 4 == 3) {
        return flipped(dnas[random() % dnas.size()], random() % 41, random);
      }
      return {random(), random()};
    case DnaKind::clustered:
      if (dnas.size() % in_cluster != 0) {
        return flipped(dnas[dnas.size() / in_cluster * in_cluster], random() % 17, random);
      }
      return {random() | 0xFFFF000000000000U, random() & 0x0000FFFFFFFFFFFFU};
    case DnaKind::alike:
      return {random() & low_bits, random() & low_bits};
  }
  return {};
}

}  // namespace

std::vector<HString> similar_dnas(DnaKind kind, std::size_t count) {
  std::mt19937_64 random(count);
  std::vector<Bits> dnas;
  std::vector<HString> texts;
  while (dnas.size() < count) {
    dnas.push_back(next(kind, dnas, random));
    texts.push_back(text_of(dnas.back()));
  }
  return texts;
}

}  // namespace bench
