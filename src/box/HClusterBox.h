#pragma once

#include <map>
#include <vector>

#include "box/HClusterOut.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "host/export.h"

/// Writes the classes of a clustering as a box file "<box id>.box", and reads such files back
/// through a cache. Its directory lies beside the working directory; installed boxes are
/// `HFileClusterBoxMgr`'s.
///
/// A box id is used as it stands, so one with a path in it leaves the directory.
class MORVA_EXPORT HClusterBox {
 public:
  /// The instance; null until the first `pins`.
  static HClusterBox* pbox;

  /// While set, every `pins` empties the cache; nothing clears it again.
  bool mb_need_init = false;
  /// The boxes that `get_box` has loaded, by id.
  std::map<HString, QXPPolicyMorvaClustBox> map_box;

  HClusterBox();
  ~HClusterBox();

  /// The instance, made on first use.
  static HClusterBox* pins();
  /// Sets `mb_need_init`.
  void set_need_init();

  /// "../data/ClusterBox", with a separator at its end if asked for. The directory is made where it
  /// is missing.
  HString get_box_path(bool const& with_sep);
  /// A copy of a box: from the cache, else from its file and then into the cache. A file that
  /// cannot be read leaves `box` as it was, and that is cached too.
  void get_box(HString const& box_id, QXPPolicyMorvaClustBox& box);
  /// Makes a box of the vocabulary and the classes and saves it; the outcome is logged at level 3.
  /// `cluster_type` is 0 for K-means and 1 for DBSCAN; with any other number the box has no
  /// classes. The cache stays as it is. Takes the memory of the classes once more, which a record
  /// that is filled and saved by its own `to_file` does not.
  void to_box(int box_value, std::vector<HString> const& vt_words,
              std::vector<HClusterOut> const& vt_out, HString const& box_id, int cluster_type);

 private:
  HString box_file(HString const& box_id);
};
