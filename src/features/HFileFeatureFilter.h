#pragma once

#include <vector>

#include "collect/HFileCollectFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"

/// A word to be removed while `check` is set.
struct HFilterKeyword {
  /// Whether the word is removed; listed words without it stay.
  bool check = false;
  /// The word, in the spelling in which it is removed.
  HString text;
};

/// The policy of which words are of no use in a collected feature record: numbers, words of Latin
/// letters, hexadecimal numbers and listed keywords. The host sets the members and then filters
/// records.
class MORVA_EXPORT HFileFeatureFilter {
 public:
  /// Remove numbers, whole (12) or with a fraction (1.5).
  bool mb_figure = false;
  /// Remove words of Latin letters only. With `mb_figure`, hexadecimal numbers (1f3a) go as well.
  bool mb_letter = false;
  /// Remove these words, in this very spelling.
  std::vector<HFilterKeyword> vt_keyword;

  HFileFeatureFilter();

  /// Removes the unwanted words, each with its count and its weight; what stays keeps its order.
  /// The lists of counts and weights are to be as long as that of the words; one that is shorter
  /// loses what it has of a removed word, one that is longer keeps its rest. Linear in the words,
  /// logarithmic in the keywords.
  void Filter(HFileCollectFeatureNode& node);
  /// Every character is one of A to Z and a to z, as is the case in the empty word.
  bool is_all_letter(HString word) const;
  /// The settings on one line, for diagnosis.
  HString to_str();
};
