#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "morvajieba/dictionary.h"

namespace morvajieba {

/// What is known of a text as a word.
struct WordEntry {
  /// Frequency; 0 for what is no word.
  std::uint64_t frequency = 0;
  /// Whether the text is a word or the beginning of one.
  bool is_prefix = false;
};

/// A word or the beginning of one in the user's own words.
struct UserNode {
  /// The user gave a frequency, which stands in place of the dictionary's; 0 takes the word out.
  bool has_frequency = false;
  /// The word was taken out: the model for unknown words must not bring it back.
  bool is_forbidden = false;
  std::uint64_t frequency = 0;
  double log_frequency = 0.0;
  /// Index of the part of speech; 0 where the user gave none.
  std::uint32_t tag = 0;
};

/// The user's words as a tree with one hash table for all its edges. Any character may stand in a
/// word.
class UserTree {
 public:
  static constexpr std::uint32_t root = 0;
  /// More nodes than this are not made: what a hostile word list can cost.
  static constexpr std::size_t most_nodes = std::size_t{1} << 20;

  bool empty() const { return nodes_.size() <= 1; }
  /// Quick test: false only where no word begins with the character.
  bool may_begin(wchar_t character) const {
    return first_characters_.test(static_cast<std::uint32_t>(character) % first_characters_.size());
  }
  /// The child of a node; `root` where there is none.
  std::uint32_t child(std::uint32_t parent, wchar_t character) const;
  UserNode const& node(std::uint32_t number) const { return nodes_[number]; }
  /// The node of a text; null where no word begins with it.
  UserNode const* find(std::wstring_view text) const;
  /// The node of a word, made where it is missing; null when the tree is full.
  UserNode* insert(std::wstring_view word);

 private:
  struct Edge {
    std::uint32_t parent = 0;
    std::uint32_t character = 0;
    std::uint32_t child = root;  // root: a free slot
  };

  std::size_t slot_of(std::uint32_t parent, std::uint32_t character) const;
  void grow();

  std::vector<UserNode> nodes_{1};
  std::vector<Edge> edges_;
  std::bitset<65536> first_characters_;
};

/// All words that the segmenter knows: those of the dictionary, and the user's in front of them.
class MORVA_EXPORT Lexicon {
 public:
  /// The dictionary is open and outlives the lexicon.
  explicit Lexicon(Dictionary const& dictionary);

  /// Takes user words from the text of a word list: lines of UTF-8 with a word, optionally a
  /// frequency and optionally a part of speech, parted by one blank. A word without a frequency
  /// gets one that lets it be cut as a whole. Lines that are no UTF-8, words beyond `longest_word`
  /// characters and what goes beyond the bounds of `UserTree` are passed over. Frequencies are
  /// taken up to 10^12.
  void load_user_words(std::string_view content);

  Dictionary const& dictionary() const { return *dictionary_; }
  UserTree const& user_words() const { return user_words_; }
  /// Logarithm of the sum of all frequencies.
  double log_total() const { return log_total_; }
  /// Length of the longest word.
  std::size_t longest() const { return longest_; }
  /// Whether any word was taken out by the user.
  bool has_forbidden() const { return has_forbidden_; }

  WordEntry find(std::wstring_view text) const;
  bool is_forbidden(std::wstring_view word) const;
  /// Part of speech of a token: the user's, the dictionary's, else by rule "eng" for a word with
  /// ASCII letters, "m" for a number, "x" for all others.
  std::string_view tag(std::wstring_view token) const;

 private:
  struct Line;

  void add(Line const& line);
  std::uint64_t suggest_frequency(std::wstring_view word) const;
  /// The dictionary's node of a text; false where it has none.
  bool find_node(std::wstring_view text, Node& node) const;
  void set_total(std::uint64_t total);

  Dictionary const* dictionary_;
  UserTree user_words_;
  std::vector<std::string> user_tags_;
  std::uint64_t total_ = 0;
  double log_total_ = 0.0;
  std::size_t longest_ = 0;
  bool has_forbidden_ = false;
};

}  // namespace morvajieba
