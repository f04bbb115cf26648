#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// The feature record of one document: its characteristic words with counts and weights, in
/// parallel lists and as a lookup map. All of clustering and classification works on it. A plain
/// value; the reserve fields belong to the host, which alone writes them.
class MORVA_EXPORT HFeatureNode {
 public:
  /// For the host: only copied, as all that is named so.
  HString str_reserve1;
  /// For the host.
  std::int64_t t_reserve = 0;
  /// File name without directories and extension.
  HString str_file_name;
  /// For the host.
  HString str_reserve2;
  /// Identifier of the file, from the host.
  HString str_file_id;
  /// For the host.
  HString str_reserve3;
  /// For the host.
  HString str_reserve4;
  /// The words, in the order that the segmenter gave them, and beside each its count and its
  /// weight.
  std::vector<HString> vt_words;
  /// How often the word at the same position stands in the text.
  std::vector<int> vt_counts;
  /// How much it characterises the document; the strongest word of a text has 1.
  std::vector<double> vt_weight;
  /// The file's fingerprint, for clustering by fingerprints; from the host.
  HString str_dna;
  /// Word to weight; for a word that stands twice in `vt_words`, the later weight.
  std::map<HString, double> map_word_weight;

  HFeatureNode();

  /// Empties the three lists and the map; all texts stay.
  void clear();
  /// The first position of the word in `vt_words`. False, with `index` untouched, when it is not
  /// there. Linear: for many lookups use `map_word_weight`.
  bool find_index(HString const& word, int& index) const;
  /// The weight at a position; 0.0 outside the list.
  double get_weight(int const& index) const;
};
