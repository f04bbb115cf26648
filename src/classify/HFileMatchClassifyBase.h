#pragma once

#include <vector>

#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "host/export.h"

/// Decides whether a document belongs to a class of a cluster box; the kinds of boxes have each a
/// classifier of their own. Beside it, helpers that bring lists of words and weights into one
/// order. Without state.
class MORVA_EXPORT HFileMatchClassifyBase {
 public:
  HFileMatchClassifyBase();
  /// Not virtual: a classifier is destroyed as what it was made.
  ~HFileMatchClassifyBase();

  /// Whether the document belongs to the class with this id; `str_out` then holds the name of the
  /// class. Its coordinates are the weights of `map_word_weight`, over the words of the box and of
  /// its `vt_words`.
  virtual bool match(HFeatureNode const& node, HString const& str_class_id,
                     QXPPolicyMorvaClustBox const& box, HString& str_out) = 0;

  /// Appends the words of the class, as they are, and behind them those words of the document that
  /// the class has not, in the document's order and as often as it has them.
  void combine_vt_words(std::vector<HString> const& vt_class_words, HFeatureNode const& node,
                        std::vector<HString>& vt_out) const;
  /// Replaces `vt_out` by the document's weight of each word, by its lists; 0.0 for a word that it
  /// lacks. Of a word that stands twice, the last weight counts; a word without a weight is none.
  void get_vt_node_data(std::vector<HString> const& vt_words, HFeatureNode const& node,
                        std::vector<double>& vt_out) const;
  /// The same with any lists of words and weights in place of a document's.
  void get_vt_data(std::vector<HString> const& vt_words,
                   std::vector<HString> const& vt_source_words,
                   std::vector<double> const& vt_source_weight, std::vector<double>& vt_out) const;
};
