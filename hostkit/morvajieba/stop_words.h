#pragma once

#include <string_view>

#include "host/export.h"
#include "morvajieba/word_table.h"

namespace morvajieba {

/// The words built in that are no keywords, Chinese and English, in lower case: one text, a blank
/// between two words.
extern std::wstring_view const builtin_stop_words;

/// Words that say nothing about a text: the built-in ones and those of a file. They are compared in
/// lower case.
class MORVA_EXPORT StopWords {
 public:
  StopWords();

  /// Adds words from the text of a file: UTF-8, one to a line; lines that are no UTF-8 are passed
  /// over, and so is what goes beyond 200,000 words.
  void load(std::string_view content);
  bool contains(std::wstring_view word) const;

 private:
  void add(std::wstring_view word);

  WordTable words_;  // in lower case
  std::size_t longest_ = 0;
};

}  // namespace morvajieba
