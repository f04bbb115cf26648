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

/// Documents of 100 distinct words each, always the same for a count; their words are also the same
/// for any larger count. The words follow the law of Zipf and Mandelbrot: some of all documents,
/// some of one topic in twenty, some of a stock of rare ones. Shares and weights are set so that
/// the vocabulary grows and the weights fall much as they do in news, postings and articles: 6,000
/// words for 100 documents, 20,000 for 500; the first word weighs 1, the tenth 0.4, the last 0.15.
GeneratedCorpus generate_corpus(std::size_t documents);

/// Points without their zeros, and with them.
std::vector<HSparsePoints::Row> to_rows(std::vector<HPointN> const& points);
std::vector<HPointN> to_points(std::vector<HSparsePoints::Row> const& rows);

}  // namespace bench
