#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "morvajieba/dictionary_format.h"

namespace morvajieba {

/// A word for the trie, as character codes.
struct TrieWord {
  std::vector<std::uint16_t> codes;
  std::uint16_t frequency;
  std::uint8_t tag;
};

/// Packs the words into a double array. `words` is sorted by codes and holds no word twice; the
/// first `code_count` slots are the row of the root.
std::vector<Node> build_double_array(std::vector<TrieWord> const& words, std::uint32_t code_count);

}  // namespace morvajieba
