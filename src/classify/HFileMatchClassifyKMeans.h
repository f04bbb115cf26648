#pragma once

#include "classify/HFileMatchClassifyBase.h"

/// Decides by the centers of a K-means box: a document belongs to the class whose center is the
/// nearest of all, if it lies within the radius of the class and a small tolerance.
class MORVA_EXPORT HFileMatchClassifyKMeans : public HFileMatchClassifyBase {
 public:
  HFileMatchClassifyKMeans();
  ~HFileMatchClassifyKMeans();

  /// Of equally near centers the one earlier in the box counts; of classes with one id, the last.
  /// Where there are several classes and the first has a DNA, the DNAs are measured, the document's
  /// `str_dna` among them, which the caller fills; otherwise the word weights.
  ///
  /// `str_out` stays as it was, and a line tells why, when no class has the id or a center is not
  /// as long as the vocabulary of the box; it is emptied when the document does not belong to the
  /// class. Sets `gi_K_ClusterType` by the first class: 1 if it has a DNA, else 0.
  ///
  /// Makes the box ready for comparison at each call, which costs time in proportion to its size;
  /// `HFileMatchClassifyMgr` does that once.
  bool match(HFeatureNode const& node, HString const& str_class_id,
             QXPPolicyMorvaClustBox const& box, HString& str_out) override;
};
