#pragma once

#include <cstddef>
#include <cstdint>

namespace morvajieba {

// The file "morvajieba.dict", as the compiler writes it and the dictionary maps it: the header
// below, then the sections, each aligned to 64 bytes, numbers in the byte order of the machine that
// wrote it. docs/segmenter.md tells the whole format.

inline constexpr char dictionary_magic[8] = {'M', 'R', 'V', 'J', 'D', 'I', 'C', 'T'};
inline constexpr std::uint32_t dictionary_byte_order = 0x01020304;
inline constexpr std::uint32_t dictionary_version = 1;

/// Longest word that a dictionary may hold, in characters: a path through a sentence keeps the
/// length of a step in one byte.
inline constexpr std::uint32_t longest_word = 255;

enum Section : std::uint32_t {
  section_codes,        ///< uint16: character codes of U+4E00..U+9FD5, then of U+0000..U+007F
  section_nodes,        ///< uint64: the double array
  section_log_values,   ///< double: logarithm of each distinct frequency; a power of two of them
  section_frequencies,  ///< uint64: the frequencies themselves
  section_tags,         ///< char[8]: parts of speech, padded with zeros
  section_emission,     ///< double[4]: per Han character, its log probability in B, E, M, S
  section_model,        ///< double: 4 start probabilities, then 16 transitions [from][to]
  section_count,
};

struct SectionPlace {
  std::uint64_t offset;
  std::uint64_t bytes;
};

struct DictionaryHeader {
  char magic[8];
  std::uint32_t byte_order;
  std::uint32_t version;
  std::uint64_t file_bytes;
  /// Sum of all frequencies.
  std::uint64_t total;
  std::uint32_t longest_word;
  std::uint32_t reserved;
  SectionPlace sections[section_count];
  /// `header_checksum` of everything above.
  std::uint64_t checksum;
};

/// FNV-1a over the header's bytes in front of its checksum.
inline std::uint64_t header_checksum(DictionaryHeader const& header) {
  auto const* const bytes = reinterpret_cast<unsigned char const*>(&header);
  std::uint64_t sum = 0xCBF29CE484222325u;
  for (std::uint64_t i = 0; i < offsetof(DictionaryHeader, checksum); ++i) {
    sum = (sum ^ bytes[i]) * 0x100000001B3u;
  }
  return sum;
}

/// Code of a character that no dictionary word can hold; also the mark of a free array slot.
inline constexpr std::uint16_t no_code = 0xFFFF;

/// One slot of the double array. The children of a node stand at `base` + code of their character,
/// and a slot belongs to a node only where its label is that code: no two nodes share a base. The
/// root has base 0. A node without children has a base beyond every array.
struct Node {
  static constexpr std::uint32_t no_children = 0xFFFFFF;

  std::uint64_t bits;

  std::uint16_t label() const { return static_cast<std::uint16_t>(bits); }
  /// Index into frequencies and logarithms; 0 where the node is only the beginning of words.
  std::uint16_t frequency() const { return static_cast<std::uint16_t>(bits >> 16); }
  std::uint32_t base() const { return static_cast<std::uint32_t>(bits >> 32) & 0xFFFFFF; }
  std::uint8_t tag() const { return static_cast<std::uint8_t>(bits >> 56); }

  static Node make(std::uint16_t label, std::uint16_t frequency, std::uint32_t base,
                   std::uint8_t tag) {
    return {label | static_cast<std::uint64_t>(frequency) << 16 |
            static_cast<std::uint64_t>(base) << 32 | static_cast<std::uint64_t>(tag) << 56};
  }
};

}  // namespace morvajieba
