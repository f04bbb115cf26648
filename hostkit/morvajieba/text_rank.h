#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "morvajieba/segmenter.h"
#include "morvajieba/stop_words.h"
#include "morvajieba/word_table.h"

namespace morvajieba {

/// How often two words stand near each other, for all pairs of words that do.
class PairCounts {
 public:
  struct Pair {
    std::uint32_t first;
    std::uint32_t second;  // not below `first`
    std::uint32_t count;   // 0: a free slot of the table
  };

  void add(std::uint32_t left, std::uint32_t right);
  /// All pairs; the table is empty afterwards. Free slots are among them, in no order that means
  /// anything.
  std::vector<Pair> take();

 private:
  /// A pair that waits to be counted, with its place in the table if that does not grow.
  struct Waiting {
    std::uint32_t first;
    std::uint32_t second;
    std::uint64_t hash;
  };

  void count_waiting();
  Pair& find(std::uint32_t first, std::uint32_t second, std::uint64_t hash);
  void grow();

  std::vector<Pair> slots_;
  std::size_t used_ = 0;
  // The table is larger than the caches: its slots are fetched for many pairs at a time.
  std::array<Waiting, 64> waiting_{};
  std::size_t waiting_count_ = 0;
};

/// A keyword of a text.
struct Keyword {
  std::wstring_view text;
  std::uint32_t count;
  double weight;
};

/// Takes the tokens of one text and ranks its words. Candidates are tokens of at least two
/// characters with a letter or digit that are no stop words; each is joined with the four
/// candidates behind it in an undirected graph, over which ten rounds of TextRank run. All memory
/// goes with the number of distinct words and pairs, not with the length of the text.
class MORVA_EXPORT TextRank : public TokenSink {
 public:
  /// The stop words outlive the object.
  explicit TextRank(StopWords const& stop_words) : stop_words_(&stop_words) {}

  void token(std::wstring_view text) override;
  /// The words by falling weight, code-point order where weights are equal, at most `top`. The
  /// weights lie between 0 and 1, the best has 1. To be called once, behind the last token; the
  /// texts live as long as this object.
  std::vector<Keyword> rank(std::size_t top);

 private:
  static constexpr std::size_t reach = 4;

  void sort_words();
  std::vector<double> compute_weights();

  StopWords const* stop_words_;
  WordTable words_;
  PairCounts pairs_;
  std::array<std::uint32_t, reach> latest_{};  // the candidates before, by number of candidate
  std::uint64_t candidates_ = 0;
  std::vector<std::uint32_t> sorted_;  // the candidates' numbers, in code-point order
};

}  // namespace morvajieba
