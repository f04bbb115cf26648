#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// What is known of one document without the document: what `learn` and `similar` need of it, or
/// why there is none.
struct ShardRecord {
  /// Bytes of the path, as it was given or found.
  std::string path;
  /// How reading ended, as a word: one of `--json`, "no words" included.
  std::string outcome;
  /// Why, for a person; empty where the document was read to its end.
  std::string reason;
  /// The words that characterise it, in UTF-8 and in the order that the segmenter gave them, with
  /// their counts, not below 0, and weights, finite numbers. None where the document gave none;
  /// then the outcome is not "text".
  std::vector<std::string> words;
  std::vector<std::int32_t> counts;
  std::vector<double> weights;
  /// The narrow fingerprint: 32 hexadecimal digits in upper case, or empty.
  std::string dna;

  /// The same to the last bit of each weight.
  friend bool operator==(ShardRecord const& a, ShardRecord const& b);
};

/// Bounds of a record, so that one who reads a shard knows what it can cost.
constexpr std::size_t longest_path = 4096;
constexpr std::size_t most_words = 10000;
/// Of path, reason and words together, in bytes.
constexpr std::size_t largest_texts = std::size_t{16} << 20;

/// Whether the record keeps the bounds and is what is said above.
bool is_storable(ShardRecord const& record);

/// Whether the document gave words, but was not read to its end.
bool is_partial(ShardRecord const& record);

/// Whether it would be the same if the document were read again: what ended its worker, or kept the
/// file from being read, may have passed by.
bool is_settled(ShardRecord const& record);

/// The order of documents in a shard: by the bytes of their paths, "/" before all others. It is
/// that in which a folder is walked, what a subfolder holds right behind its name.
bool path_before(std::string_view a, std::string_view b);

/// The number that stands for an outcome in a file; that of "failed" for a word that is none.
std::uint8_t outcome_code(std::string_view outcome);
/// The word again; nothing for a number that stands for none.
std::optional<std::string_view> outcome_word(std::uint8_t code);

/// What a command says on standard error of the document; empty where all went well. Fit for a
/// terminal.
std::string problem_of(ShardRecord const& record);

}  // namespace tool
