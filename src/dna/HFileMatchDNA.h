#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Compares two file DNAs.
class MORVA_EXPORT HFileMatchDNA {
 public:
  HFileMatchDNA();
  ~HFileMatchDNA();

  /// The share of bit positions in which the two texts agree, from 0.0 to 100.0; each character
  /// counts as four bits, and anything but an upper-case hexadecimal digit as 0. 0.0 where one is
  /// empty or their lengths differ. Unrelated files agree in about half of the bits.
  static double get_dna_similarity(HString const& a, HString const& b);
  /// Whether the similarity is at or above the threshold. A threshold of 0.0 accepts every pair.
  static bool match(HString const& a, HString const& b, double threshold);
};
