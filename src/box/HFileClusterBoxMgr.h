#pragma once

#include <map>
#include <vector>

#include "box/HClusterBoxLocalNode.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "host/export.h"

/// The installed cluster boxes: which of them holds which class, by the index that
/// `HFileClusterBoxIni` keeps, and the boxes themselves through a cache.
///
/// The index is read at the first use and by the refreshing operations. A box that is once in the
/// cache stays there as it was read, whatever becomes of its file.
class MORVA_EXPORT HFileClusterBoxMgr {
 public:
  /// The instance; null until the first `pins`.
  static HFileClusterBoxMgr* pbox;

  /// True once the index has been looked for.
  bool mb_init = false;
  /// The directory of boxes, with a separator at its end.
  HString str_box_path;
  /// The entries of the index, in file order.
  std::vector<HClusterBoxLocalNode> vt_local_box;
  /// The boxes that have been loaded, by id.
  std::map<HString, QXPPolicyMorvaClustBox> map_box;

  HFileClusterBoxMgr();
  ~HFileClusterBoxMgr();

  /// The instance, made and initialised on first use.
  static HFileClusterBoxMgr* pins();
  /// Reads the index, once. Always true, also where there is no index.
  bool init();

  /// With true: reads the index again. Always true.
  bool download(bool b_update);
  /// Does nothing; always false.
  bool download_box() const;
  /// Reads the index again.
  void update_box_ini();
  /// Applies the box file at `path` to the index as a fresh state record says, which is not at all,
  /// and reads the index again.
  void read_box_to_ini(HString path);

  /// Assigns a copy of the entries.
  void get_local_box(std::vector<HClusterBoxLocalNode>& vt_node) const;
  /// Appends the identifiers of the classes of a box, in box order.
  void get_vt_class_id(QXPPolicyMorvaClustBox const& box, std::vector<HString>& vt_class_id) const;
  /// Whether an entry for that box lists that class.
  bool is_in_box(HString const& class_id, HString const& box_id) const;
  /// The last box of the index that lists the class; empty when none does.
  HString get_box_id_by_class_id(HString const& class_id) const;

  /// The directory of boxes; with true, one more separator behind its own.
  HString get_box_path(bool const& with_sep) const;
  /// A copy of a box: from the cache, else from its file, listed or not, and then into the cache.
  /// False, with a line logged at level 1 and `box` as it was, when there is no such file. A file
  /// that cannot be read leaves `box` as it was too, but gives true, and that is cached.
  bool get_box(HString const& box_id, QXPPolicyMorvaClustBox& box);
  /// The same without the copy: the box in the cache, which stays there for good; what `get_box`
  /// would give a new record. Null where `get_box` gives false.
  QXPPolicyMorvaClustBox const* find_box(HString const& box_id);

 private:
  HString box_file(HString const& box_id) const;
};
