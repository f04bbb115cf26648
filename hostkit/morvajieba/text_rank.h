#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "morvajieba/neighbour_counts.h"
#include "morvajieba/segmenter.h"
#include "morvajieba/stop_words.h"
#include "morvajieba/word_table.h"

namespace morvajieba {

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
  /// The candidates' numbers, in code-point order.
  std::vector<std::uint32_t> sort_words() const;

  StopWords const* stop_words_;
  WordTable words_;
  std::vector<bool> is_stop_word_;  // per word
  NeighbourCounts neighbours_;
};

}  // namespace morvajieba
