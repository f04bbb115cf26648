#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One K-means class in a cluster box.
class MORVA_EXPORT QXPKMeansNode {
 public:
  /// Identifier of the class, by which boxes are asked.
  HString str_class_id;
  /// Label of the class, which a match reports.
  HString str_class_name;
  /// The distance from the center within which a document belongs to the class.
  double d_radius = 0.0;
  /// Not read: the words of a class are those of its box.
  std::vector<HString> vt_words;
  /// Center of the class, one value for each word of the box.
  std::vector<double> vt_weight;
  /// DNA of the center; empty in a box of word weights.
  HString str_dna;
  /// Belongs to the host: only stored.
  std::int64_t i_reserve = 0;

  QXPKMeansNode();
};
