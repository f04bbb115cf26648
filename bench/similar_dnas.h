#pragma once

#include <cstddef>
#include <vector>

#include "host/HString.h"

namespace bench {

/// How narrow DNAs are made, always the same ones for a kind and a number.
enum class DnaKind {
  /// Three quarters have random bits; each other one is a copy of one of these in which up to 40
  /// bits, as many as by chance, are the other way round.
  planted,
  /// Of each hundred, 99 have up to 16 bits, chosen by chance, the other way round than the first;
  /// and a quarter of the bits are nearly the same in all, as in documents that share many words.
  clustered,
  /// Only the lowest bit of each digit is not the same in all.
  alike,
};

std::vector<HString> similar_dnas(DnaKind kind, std::size_t count);

}  // namespace bench
