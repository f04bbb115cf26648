#pragma once

#include <vector>

#include "box/HClusterBoxLocalNode.h"
#include "host/HString.h"
#include "host/export.h"

/// The index of the cluster boxes on this machine: an INI file beside the boxes, with a section for
/// each box named by its id, and in it the keys "MD5" and "CLASS", the class ids joined by "|".
///
/// Each operation reads or rewrites the file in one go; a rewrite keeps everything else in it.
/// `HFileClusterBoxMgr` takes note of a change when it reads the index again. An id may hold any
/// character, but a class id that holds the bar is read back as several.
class MORVA_EXPORT HFileClusterBoxIni {
 public:
  /// Path of the index, formed when the library is loaded: the directory of boxes and "box.ini".
  /// Nothing is created.
  static HString mstr_box_ini;

  HFileClusterBoxIni();
  ~HFileClusterBoxIni();

  /// Enters a box file. One that cannot be read changes nothing and is logged at level 1.
  static void add_box_file(HString path);
  /// Removes the entry of a box file. The file itself stays, or may be gone already, which is
  /// logged at level 1.
  static void del_box_file(HString path);

  /// Replaces the list by the whole index, in file order. Without an index the list is empty, and a
  /// line is logged at level 1.
  static void read_local_box_node(std::vector<HClusterBoxLocalNode>& vt_node);
  /// Reads the MD5 and the classes of one box; the id in the node is left alone. For a box that the
  /// index does not have, the MD5 stays as it was and the classes are emptied; without an index
  /// both stay.
  static void read_local_box_node(HString const& box_id, HClusterBoxLocalNode& node);
  /// Enters a node, over an older one of the same id. The index is made where there is none.
  static void write_local_box_node(HClusterBoxLocalNode const& node);
  /// Removes the entry of a box, if there is one.
  static void delete_local_box_node(HString const& box_id);
};
