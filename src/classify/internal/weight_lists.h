#pragma once

#include <span>
#include <vector>

#include "classify/internal/vocabulary.h"
#include "features/HFeatureNode.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "numeric/internal/distance_table.h"

namespace morva {

/// Weight lists over the words of a box: centers of classes, or members of them.
using Lists = std::vector<std::span<double const>>;

/// The centers of all classes, in box order.
Lists lists_of(std::vector<QXPKMeansNode> const& classes);
/// The members of all classes, class by class in box order.
Lists lists_of(std::span<QXPDBScanNode const> classes);

/// The words of a box and weight lists over them, in the form in which documents are compared with
/// them: what is not zero, by word and by list. Holds copies of all it needs.
///
/// Its points, and those of documents, have the index 2r + 1 for the word of rank r and leave the
/// even ones to words of a document that no list has, each at its place in the order of words, so
/// that sums over the words of both run in that order.
class WeightLists {
 public:
  /// A list of another length than the words is kept as one of zeros. Linear in the lists and the
  /// words, but for putting words in order that are not.
  WeightLists(std::vector<HString> const& words, Lists const& lists);

  /// Whether these are the words and the lists that it was made of: in the same place of memory, of
  /// the same lengths, and with the same content, of which in a large box a part is looked at.
  bool is_of(std::vector<HString> const& words, Lists const& lists) const;

  Vocabulary const& vocabulary() const { return vocabulary_; }
  /// One point for each list.
  DistanceTable const& points() const { return points_; }
  /// The point of a document over the words of the lists and its own: the weights that its map has
  /// for them.
  SparsePoint point_of(HFeatureNode const& node) const;

 private:
  SparsePoint point_of(std::span<double const> list) const;
  bool has_equal_words(std::vector<HString> const& words) const;
  bool has_equal_values(Lists const& lists) const;
  bool has_equal_samples(Lists const& lists) const;

  Vocabulary vocabulary_;
  HString const* words_from_;
  Lists lists_from_;
  DistanceTable points_;
};

}  // namespace morva
