#pragma once

#include "classify/HFileMatchClassifyBase.h"

/// Decides by the members of the classes of a DBSCAN box: a document belongs to a class if it
/// coincides with a member, or has as many of them within the radius of the run as the run asked
/// for.
class MORVA_EXPORT HFileMatchClassifyDBScan : public HFileMatchClassifyBase {
 public:
  HFileMatchClassifyDBScan();
  ~HFileMatchClassifyDBScan();

  /// Of classes with one id, the first counts. A distance is within `d_eps` up to a small
  /// tolerance; with `i_minpts` of 0 or less any member will do, near or not. A member that is not
  /// as long as the vocabulary of the box is left out. Always by word weights.
  ///
  /// `str_out` changes only when the document belongs to the class. One line tells the number of
  /// classes, and one when none with members has the id.
  bool match(HFeatureNode const& node, HString const& str_class_id,
             QXPPolicyMorvaClustBox const& box, HString& str_out) override;
};
