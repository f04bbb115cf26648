#include "dna/HFileMatchDNA.h"

#include <string_view>

#include "dna/internal/digits.h"

HFileMatchDNA::HFileMatchDNA() = default;
HFileMatchDNA::~HFileMatchDNA() = default;

double HFileMatchDNA::get_dna_similarity(HString const& a, HString const& b) {
  std::wstring_view const first = text_view(a);
  std::wstring_view const second = text_view(b);
  if (first.empty() || second.size() != first.size()) {
    return 0.0;
  }
  return morva::similarity(morva::differing_bits(first, second), first.size());
}

bool HFileMatchDNA::match(HString const& a, HString const& b, double threshold) {
  return get_dna_similarity(a, b) >= threshold;
}
