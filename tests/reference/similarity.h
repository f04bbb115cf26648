#pragma once

#include <cstddef>
#include <vector>

#include "dna/HFileSimHash.h"
#include "host/HString.h"

namespace reference {

/// The similarity of two fingerprints in its plainest form: position by position over the expanded
/// bits. `HFileMatchDNA::get_dna_similarity` is compared with it bit for bit.
inline double similarity(HString const& a, HString const& b) {
  std::vector<int> bits_a;
  std::vector<int> bits_b;
  HFileSimHash::simhashTobinary(a, bits_a);
  HFileSimHash::simhashTobinary(b, bits_b);
  if (bits_a.empty() || bits_a.size() != bits_b.size()) {
    return 0.0;
  }
  int agreeing = 0;
  for (std::size_t i = 0; i < bits_a.size(); ++i) {
    agreeing += bits_a[i] == bits_b[i] ? 1 : 0;
  }
  return static_cast<double>(agreeing) / static_cast<double>(bits_a.size()) * 100.0;
}

}  // namespace reference
