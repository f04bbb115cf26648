#pragma once

#include <vector>

#include "collect/HFileCollectBase.h"
#include "host/HString.h"
#include "host/export.h"

/// The record of a file's words, in parallel lists like those of `HFeatureNode`.
class MORVA_EXPORT HFileCollectFeatureNode : public HFileCollectBase {
 public:
  std::vector<HString> vt_words;
  std::vector<int> vt_counts;
  std::vector<double> vt_weight;

  HFileCollectFeatureNode();
};
