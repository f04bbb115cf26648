#include "dna/HFileMatchDNA.h"

#include <bit>

#include "dna/HFileSimHash.h"

HFileMatchDNA::HFileMatchDNA() = default;
HFileMatchDNA::~HFileMatchDNA() = default;

double HFileMatchDNA::get_dna_similarity(HString const& a, HString const& b) {
  int const length = a.length();
  if (length == 0 || b.length() != length) {
    return 0.0;
  }
  long long const bits = 4LL * length;
  long long agreeing = bits;
  for (int i = 0; i < length; ++i) {
    int const differing = HFileSimHash::hex2dec(a[i]) ^ HFileSimHash::hex2dec(b[i]);
    agreeing -= std::popcount(static_cast<unsigned int>(differing));
  }
  return static_cast<double>(agreeing) / static_cast<double>(bits) * 100.0;
}

bool HFileMatchDNA::match(HString const& a, HString const& b, double threshold) {
  return get_dna_similarity(a, b) >= threshold;
}
