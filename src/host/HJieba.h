#pragma once

#include <vector>

#include "host/HString.h"
#include "host/WordNode.h"
#include "host/export.h"

/// The word segmenter: jieba's algorithm (word graph with best path, hidden-Markov model for
/// unknown words) and TextRank keywords on top of it.
///
/// The dictionary of `HStutterDict` is mapped at the first use and again when its directory
/// changes; mapping costs microseconds and next to no private memory. Not safe for two threads at a
/// time.
///
/// Words: runs of Han characters are cut by the dictionary; full-width forms are read as their
/// ASCII forms; runs of letters of other alphabets stay whole words; case is kept. Keywords: tokens
/// of at least two characters that are no stop words and hold a letter or a digit. TextRank
/// (Mihalcea and Tarau, 2004): an undirected graph that joins each candidate with the four
/// candidates behind it, damping 0.85, ten rounds in code-point order; weights are mapped so that
/// the best word has 1.
class MORVA_EXPORT HJieba {
 public:
  /// The singleton; both names give the same object.
  static HJieba* ins();
  /// The singleton; `ins` gives the same object.
  static HJieba* pins();

  /// Loads the dictionary; 0 is success, anything else means that there is none.
  int Init();

  /// Reads a text file (encoding by mark, UTF-8 or detection) and fills `words` with its keywords,
  /// at most `top`, in descending weight and code-point order where weights are equal: a smaller
  /// `top` gives the first words of a larger one. `words` is left empty when the file or the
  /// dictionary cannot be read. The flag is reserved and is to be true.
  void textrank_extractor(HString const& file, std::vector<WordNode>& words,
                          unsigned long const& top, bool const& reserved);
  /// The same for a text in memory. The name is that of the document and does not change the
  /// result.
  void textrank_extractor(HString const& text, HString const& name, std::vector<WordNode>& words,
                          unsigned long const& top, bool const& reserved);

  /// Replaces `tokens` by the text cut into words, in order; blanks and punctuation are tokens too.
  /// False, with `tokens` empty, without a dictionary.
  bool cut(HString const& text, std::vector<HString>& tokens);

 private:
  HJieba() = default;
};
