#pragma once

#include <vector>

#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"

/// Whether a document belongs to one of a set of classes: asks the classifier of each box, class by
/// class, up to the first that it belongs to. Then the result is true and `str_out` holds the name
/// of that class. Otherwise `str_out` is what the classifiers left there.
///
/// A document that shares no word of its `vt_words` with the vocabulary of a box belongs to none of
/// its classes, and no classifier is asked.
///
/// The boxes are those of `HFileClusterBoxMgr`, by its index and out of its cache, which is not
/// copied. A box is made ready for comparison once, at its first match, and again after it has been
/// read from its file. A host may also put boxes into `HFileClusterBoxMgr::map_box` itself, erase
/// them, or assign others to them between two calls: the next call sees by the place, the lengths
/// and samples of the words and weights that it is another box. Up to 64 words and 4096 weights all
/// of them are looked at. To change a few weights or words of a larger box, erase it and have it
/// read from its file.
class MORVA_EXPORT HFileMatchClassifyMgr {
 public:
  /// The singleton; null until it is first asked for.
  static HFileMatchClassifyMgr* pmgr;

  HFileMatchClassifyMgr();
  ~HFileMatchClassifyMgr();

  /// The singleton, made at first use.
  static HFileMatchClassifyMgr* pins();

  /// Those of the classes that the index has in this box, in their order. A file that is missing or
  /// cannot be read is an empty box.
  bool match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
             HString const& str_box_id, HString& str_out) const;
  /// Each class in the box that the index has it in, box by box in the order of their ids. A class
  /// without a box is logged.
  bool match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
             HString& str_out) const;
  /// One class in one box.
  bool match(HFeatureNode const& node, HString const& str_class_id, HString const& str_box_id,
             HString& str_out) const;
  /// One class in the box that the index has it in.
  bool match(HFeatureNode const& node, HString const& str_class_id, HString& str_out) const;
  /// One class in each of the boxes that has it, in their order.
  bool match(HFeatureNode const& node, HString const& str_class_id,
             std::vector<HString> const& vt_box_id, HString& str_out) const;
  /// Parallel lists: class i in box i, box by box in the order of their ids. A box is asked about
  /// the class at its own position, once for each class of the list that the index has in that box,
  /// whichever that is; where the list of classes is too short, about none.
  bool match(HFeatureNode const& node, std::vector<HString> const& vt_class_id,
             std::vector<HString> const& vt_box_id, HString& str_out) const;
};
