#include "dna/HFileMatchDNA.h"

#include <bit>
#include <cstddef>
#include <string>

#include "dna/HFileSimHash.h"

HFileMatchDNA::HFileMatchDNA() = default;
HFileMatchDNA::~HFileMatchDNA() = default;

double HFileMatchDNA::get_dna_similarity(HString const& a, HString const& b) {
  std::wstring const first = a.get_ws();
  std::wstring const second = b.get_ws();
  if (first.empty() || second.size() != first.size()) {
    return 0.0;
  }
  std::size_t const bits = 4 * first.size();
  std::size_t agreeing = bits;
  for (std::size_t i = 0; i < first.size(); ++i) {
    int const differing = HFileSimHash::hex2dec(first[i]) ^ HFileSimHash::hex2dec(second[i]);
    agreeing -= static_cast<std::size_t>(std::popcount(static_cast<unsigned int>(differing)));
  }
  return static_cast<double>(agreeing) / static_cast<double>(bits) * 100.0;
}

bool HFileMatchDNA::match(HString const& a, HString const& b, double threshold) {
  return get_dna_similarity(a, b) >= threshold;
}
