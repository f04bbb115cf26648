#include "classify/internal/vocabulary.h"

#include <algorithm>
#include <string_view>

namespace morva {

namespace {

// A number that orders words as far as their first three characters tell: a word with a smaller one
// comes first. What is beyond Unicode is all one, and nothing behind it counts.
std::uint64_t order_key(std::wstring_view word) {
  constexpr std::size_t characters = 3;
  constexpr int bits = 21;
  constexpr std::uint32_t greatest = (1U << bits) - 1;
  std::uint64_t key = 0;
  bool is_told = true;
  for (std::size_t i = 0; i < characters; ++i) {
    std::uint32_t const character =
        is_told && i < word.size() ? static_cast<std::uint32_t>(word[i]) : 0;
    is_told = is_told && character < greatest;
    key = key << bits | std::min(character, greatest);
  }
  return key;
}

struct Entry {
  std::uint64_t key;
  std::uint32_t position;
};

}  // namespace

Vocabulary::Vocabulary(std::span<HString const> words) : words_(words.begin(), words.end()) {
  std::vector<Entry> entries;
  entries.reserve(words_.size());
  for (HString const& word : words_) {
    entries.push_back({order_key(text_view(word)), static_cast<std::uint32_t>(entries.size())});
  }
  auto const comes_first = [this](Entry const& a, Entry const& b) {
    return a.key != b.key ? a.key < b.key : words_[a.position] < words_[b.position];
  };
  // A box is built with its words in order, as a rule.
  if (!std::is_sorted(entries.begin(), entries.end(), comes_first)) {
    std::stable_sort(entries.begin(), entries.end(), comes_first);
  }
  positions_.reserve(entries.size());
  keys_.reserve(entries.size());
  for (Entry const& entry : entries) {
    if (!keys_.empty() && words_[positions_.back()] == words_[entry.position]) {
      positions_.back() = entry.position;
      continue;
    }
    positions_.push_back(entry.position);
    keys_.push_back(entry.key);
  }
}

Vocabulary::Place Vocabulary::place_of(HString const& word, std::uint32_t from) const {
  auto const comes_first = [&](std::uint64_t const& each, std::uint64_t wanted) {
    return each != wanted ? each < wanted : word_at(&each - keys_.data()) < word;
  };
  std::uint64_t const key = order_key(text_view(word));
  auto const found = std::lower_bound(keys_.begin() + from, keys_.end(), key, comes_first);
  bool const is_word = found != keys_.end() && *found == key &&
                       text_view(word_at(found - keys_.begin())) == text_view(word);
  return {static_cast<std::uint32_t>(found - keys_.begin()), is_word};
}

}  // namespace morva
