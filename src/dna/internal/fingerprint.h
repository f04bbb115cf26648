#pragma once

#include <span>
#include <vector>

#include "host/HString.h"

namespace morva {

struct WeightedWord {
  HString const* word;
  double weight;
};

/// The fingerprint that `HFileSimHash::simhashDNA` gives for a map of the words, in the form of the
/// DNA length in force: a word that stands several times has the sum of its weights, formed in the
/// order of the list. Empty for an empty list.
///
/// The time is that of walking the words' texts: hashes are made in vectors (`word_hashes`), put in
/// order by their first bits, and all 128 positions of a vote are added at once.
HString fingerprint(std::span<WeightedWord const> words);

}  // namespace morva
