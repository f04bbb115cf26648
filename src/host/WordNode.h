#pragma once

#include <cstdint>

#include "host/HString.h"

/// One word that the segmenter found in a text.
struct WordNode {
  /// The word, as the segmenter has cut it.
  HString word;
  /// Part of speech, in the notation of the dictionary.
  HString tag;
  /// How often the word stands in the text.
  std::int32_t count = 0;
  /// TextRank weight; the best word of a text has 1.
  double weight = 0.0;
  /// For the host: only copied.
  std::int64_t i_reserve1 = 0;
  /// For the host: only copied.
  std::int64_t i_reserve2 = 0;
  /// For the host: only copied.
  std::int64_t i_reserve3 = 0;
};
