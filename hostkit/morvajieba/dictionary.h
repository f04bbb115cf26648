#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/export.h"
#include "morvajieba/characters.h"
#include "morvajieba/dictionary_format.h"

namespace morvajieba {

/// The states of a character in a word, in the order in which ties are decided (the later state
/// wins).
enum State : std::uint8_t { state_begin, state_end, state_middle, state_single, state_count };

/// The compiled dictionary: words with frequency and part of speech, and the tables of the model
/// for unknown words. The file is mapped read-only and shared with all other processes. Opening
/// looks at the header alone; whatever else the file holds, lookups stay within it.
class MORVA_EXPORT Dictionary {
 public:
  Dictionary() = default;
  ~Dictionary();
  Dictionary(Dictionary const&) = delete;
  Dictionary& operator=(Dictionary const&) = delete;

  /// Maps a file in place of the one before. False, with nothing mapped, when it cannot be used.
  bool open(std::string const& path);
  void close();
  /// Whether `open` would succeed.
  static bool is_usable(std::string const& path);

  /// Sum of all frequencies.
  std::uint64_t total() const { return header_->total; }
  /// Length of the longest word, at most `longest_word` of the format.
  std::size_t longest() const { return header_->longest_word; }

  /// Code of a Han, `ascii` or `joiner` character in its ASCII form.
  std::uint16_t code(wchar_t character) const {
    std::uint32_t const value = code_point(character);
    return codes_[value < 0x80 ? han_count + value : value - first_han];
  }
  /// The child of the node with this base; false, and `node` untouched, where there is none.
  bool child(std::uint32_t base, std::uint16_t code, Node& node) const {
    std::uint32_t const index = base + code;
    if (index >= node_count_ || nodes_[index].label() != code) return false;
    node = nodes_[index];
    return true;
  }
  double log_frequency(Node node) const { return log_values_[node.frequency() & frequency_mask_]; }
  std::uint64_t frequency(Node node) const {
    return frequencies_[node.frequency() & frequency_mask_];
  }
  /// Part of speech of a word's node.
  std::string_view tag(Node node) const;

  /// Log probability of a Han character in each state.
  double const* emission(wchar_t han) const {
    return emission_ + std::size_t{state_count} * (code_point(han) - first_han);
  }
  double start(State state) const { return model_[state]; }
  double transition(State from, State to) const { return model_[state_count * (from + 1u) + to]; }

 private:
  template <typename T>
  T const* section(Section number) const;

  DictionaryHeader const* header_ = nullptr;  // the mapping
  std::uint16_t const* codes_ = nullptr;
  Node const* nodes_ = nullptr;
  std::uint32_t node_count_ = 0;
  std::uint32_t frequency_mask_ = 0;
  double const* log_values_ = nullptr;
  std::uint64_t const* frequencies_ = nullptr;
  char const* tags_ = nullptr;
  std::uint32_t tag_count_ = 0;
  double const* emission_ = nullptr;
  double const* model_ = nullptr;
};

}  // namespace morvajieba
