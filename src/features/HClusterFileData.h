#pragma once

#include <vector>

#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"
#include "numeric/HPointN.h"

/// The numeric form of a set of documents, which clustering and classification work on: one sorted
/// vocabulary, the union of all their words, and for each document a point whose coordinate i is
/// the document's weight of word i, as it was extracted, or 0 where the document lacks the word.
///
/// The points are dense: n documents over v words take n times v doubles, which `HSparseFileData`
/// does without. Nothing is logged here but the line of `HFileDNA` for a fingerprint that is none.
class MORVA_EXPORT HClusterFileData {
 public:
  HClusterFileData();
  ~HClusterFileData();

  /// Replaces `vt_words` by the words of all records, ascending, each once. A word's weight plays
  /// no part.
  static void get_words(std::vector<HFeatureNode> const& vt_feature,
                        std::vector<HString>& vt_words);
  /// The point of one document over any list of words, in the order of the list: the weights in
  /// `map_word_weight`; the label stays. With `use_dna` instead the point of the record's
  /// fingerprint, labelled with its file id, whatever the words are. One map lookup for each word.
  static void get_data(HFeatureNode const& node, std::vector<HString> const& vt_words,
                       HPointN& point, bool use_dna);
  /// Replaces `vt_words` by the vocabulary of the records and `vt_point` by their points, one for
  /// each record in order, as `get_data` makes them of new ones. Linear in the size of the result.
  static void format_data(std::vector<HFeatureNode> const& vt_feature,
                          std::vector<HString>& vt_words, std::vector<HPointN>& vt_point,
                          bool use_dna);
  /// The same from files, by the words of their documents. A file that gives no features is left
  /// out, so that point k belongs to the k-th file that gave some; a caller that must know which
  /// those are extracts the features itself and calls `format_data`. With `b_print` the console
  /// shows the progress: "." for each file done, "#" for each left out.
  static void get_data_from_files(std::vector<HString> const& vt_file,
                                  std::vector<HString>& vt_words, std::vector<HPointN>& vt_point,
                                  bool b_print);
};
