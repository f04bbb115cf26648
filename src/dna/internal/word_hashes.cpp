#include "dna/internal/word_hashes.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <optional>

#include "dna/HFileSimHash.h"
#include "host/HString.h"
#include "host/utf8.h"

namespace morva {

namespace {

constexpr std::size_t lanes = 16;
constexpr std::size_t block_words = 16;
constexpr std::size_t longest_in_block = 55;

using Lanes [[gnu::vector_size(64)]] = std::uint32_t;
using LaneValues = std::array<std::uint32_t, lanes>;
// Word by word of the block, each for all lanes.
using Blocks = std::array<LaneValues, block_words>;
using Digests = std::array<LaneValues, 4>;

constexpr std::array<std::uint32_t, 4> start = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

constexpr std::array<std::array<int, 4>, 4> shifts = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

// The whole part of 2^32 times the absolute sine of 1, 2, 3, ... 64.
constexpr std::array<std::uint32_t, 64> sines = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

// Compiled for several widths, of which the loader picks one; not under the sanitizers, which start
// up after the loader has picked.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void digest_blocks(Blocks const& blocks, Digests& digests) {
  Lanes a = Lanes{} + start[0];
  Lanes b = Lanes{} + start[1];
  Lanes c = Lanes{} + start[2];
  Lanes d = Lanes{} + start[3];
  for (std::size_t i = 0; i < sines.size(); ++i) {
    std::size_t const round = i / block_words;
    Lanes mixed;
    std::size_t word = i;
    switch (round) {
      case 0:
        mixed = (b & c) | (~b & d);
        break;
      case 1:
        mixed = (d & b) | (~d & c);
        word = 5 * i + 1;
        break;
      case 2:
        mixed = b ^ c ^ d;
        word = 3 * i + 5;
        break;
      default:
        mixed = c ^ (b | ~d);
        word = 7 * i;
    }
    Lanes input;
    std::memcpy(&input, blocks[word % block_words].data(), sizeof input);
    Lanes const sum = a + mixed + input + sines[i];
    int const shift = shifts[round][i % 4];
    a = d;
    d = c;
    c = b;
    b += (sum << shift) | (sum >> (32 - shift));
  }
  a += start[0];
  b += start[1];
  c += start[2];
  d += start[3];
  std::memcpy(digests[0].data(), &a, sizeof a);
  std::memcpy(digests[1].data(), &b, sizeof b);
  std::memcpy(digests[2].data(), &c, sizeof c);
  std::memcpy(digests[3].data(), &d, sizeof d);
}

using Block = std::array<std::uint32_t, block_words>;

// The word in UTF-8 with MD5's padding; none where that takes more than one block.
std::optional<Block> block_of(std::wstring_view word) {
  std::array<char, sizeof(Block)> bytes{};
  std::size_t used = 0;
  for (wchar_t const c : word) {
    if (used > longest_in_block) {
      return std::nullopt;
    }
    used += morvabs::encode_utf8(static_cast<char32_t>(c), bytes.data() + used);
  }
  if (used > longest_in_block) {
    return std::nullopt;
  }
  bytes[used] = static_cast<char>(0x80);
  static_assert(std::endian::native == std::endian::little);
  auto block = std::bit_cast<Block>(bytes);
  block[block_words - 2] = static_cast<std::uint32_t>(8 * used);
  return block;
}

WordHash hash_alone(HString const& word) {
  HString const digits = word.get_md5_std_format(HString());
  WordHash hash{};
  for (wchar_t const digit : text_view(digits)) {
    hash[0] = hash[0] << 4U | hash[1] >> 60U;
    hash[1] = hash[1] << 4U | static_cast<unsigned>(HFileSimHash::hex2dec(digit));
  }
  return hash;
}

std::uint64_t in_digit_order(std::uint32_t first, std::uint32_t second) {
  return std::uint64_t{__builtin_bswap32(first)} << 32U | __builtin_bswap32(second);
}

// Words waiting until there is one for each lane.
class Batch {
 public:
  void add(Block const& block, WordHash& hash) {
    for (std::size_t i = 0; i < block_words; ++i) {
      blocks_[i][used_] = block[i];
    }
    hashes_[used_++] = &hash;
    if (used_ == lanes) {
      finish();
    }
  }

  void finish() {
    if (used_ == 0) {
      return;
    }
    Digests digests;
    digest_blocks(blocks_, digests);
    for (std::size_t i = 0; i < used_; ++i) {
      *hashes_[i] = {in_digit_order(digests[0][i], digests[1][i]),
                     in_digit_order(digests[2][i], digests[3][i])};
    }
    used_ = 0;
  }

 private:
  Blocks blocks_{};
  std::array<WordHash*, lanes> hashes_{};
  std::size_t used_ = 0;
};

}  // namespace

void hash_words(std::span<std::wstring_view const> words, std::span<WordHash> hashes) {
  Batch batch;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (std::optional<Block> const block = block_of(words[i])) {
      batch.add(*block, hashes[i]);
    } else {
      hashes[i] = hash_alone(HString(words[i].data(), static_cast<int>(words[i].size())));
    }
  }
  batch.finish();
}

}  // namespace morva
