#pragma once

#include <vector>

#include "collect/HFileCollectBase.h"
#include "host/HString.h"
#include "host/export.h"

/// The record of a file's words, in parallel lists like those of `HFeatureNode`.
class MORVA_EXPORT HFileCollectFeatureNode : public HFileCollectBase {
 public:
  /// The 100 strongest words of the file, the strongest first.
  std::vector<HString> vt_words;
  /// How often the word at the same position stands in the text.
  std::vector<int> vt_counts;
  /// Its weight; the strongest word has 1.
  std::vector<double> vt_weight;

  HFileCollectFeatureNode();
};
