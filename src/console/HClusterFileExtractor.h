#pragma once

#include "host/export.h"

/// Starts the word segmenter.
class MORVA_EXPORT HClusterFileExtractor {
 public:
  /// The singleton; null until it is first asked for.
  static HClusterFileExtractor* pext;

  HClusterFileExtractor();
  ~HClusterFileExtractor();

  /// The singleton, made at first use.
  static HClusterFileExtractor* pins();

  /// Loads the dictionary; false when there is none.
  bool init_jieba();
};
