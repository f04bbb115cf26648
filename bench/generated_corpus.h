#pragma once

#include <cstddef>
#include <vector>

#include "numeric/HPointN.h"
#include "numeric/HSparsePoints.h"

namespace bench {

/// Documents by the words that they have, and the same documents by fingerprint.
struct GeneratedCorpus {
  /// Term weights over the vocabulary of the documents.
  std::vector<HSparsePoints::Row> words;
  /// 128 coordinates each.
  std::vector<HPointN> dna;
};

/// The first of the generated documents, by their 100 strongest words. The same for a count, and
/// but for the numbers of the coordinates, which stand for the words of all, for any larger one.
std::vector<HSparsePoints::Row> generate_words(std::size_t documents);
/// The same, with their fingerprints.
GeneratedCorpus generate_corpus(std::size_t documents);

/// Points without their zeros, and with them.
std::vector<HSparsePoints::Row> to_rows(std::vector<HPointN> const& points);
std::vector<HPointN> to_points(std::vector<HSparsePoints::Row> const& rows);

}  // namespace bench
