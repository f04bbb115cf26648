#pragma once

#include <optional>
#include <string>
#include <vector>

#include "morvaai.h"

namespace tool {

/// The boxes of this machine: the files in the directory of boxes, and the index of them.
///
/// Changes hold off signals and other runs of the program, so that a box is there, in directory and
/// index, or it is not. Operations that can fail give the reason, and nothing when all went well.
class BoxStore {
 public:
  using Problem = std::optional<std::string>;

  /// Why the index cannot be read; nothing where there is none.
  static Problem refuse_index();
  /// The entries of the index, in its order. This and what asks it, as `has`, throws where the
  /// index cannot be read: the library would take it for an empty one.
  static std::vector<HClusterBoxLocalNode> entries();
  static std::optional<HClusterBoxLocalNode> entry(HString const& id);
  /// The ids of box files that the index does not have, in order.
  static std::vector<HString> unlisted();
  /// Whether there is a file or an entry of that id.
  static bool has(HString const& id);

  /// The file of a box; for an id that is no file name nothing.
  static std::optional<HString> file_of(HString const& id);

  /// What to say of a box that is not there.
  static std::string no_such_box(HString const& id);
  /// Why no box can have that id: its file would not lie in the directory.
  static Problem refuse_name(HString const& id);
  /// Why a new box cannot have that id.
  static Problem refuse_id(HString const& id);
  /// Why a box of that id is not to be written where none may be replaced.
  static Problem refuse_replacing(HString const& id);

  /// Copies a box file into the directory, or saves a box there, and enters it in the index. One of
  /// the same id is replaced where that is allowed. Takes the memory of one box, that of `box`
  /// included when it is handed over.
  static Problem install(HString const& file, HString const& id, bool may_replace);
  static Problem install(QXPPolicyMorvaClustBox box, HString const& id, bool may_replace);
  /// Removes entry and file.
  static Problem remove(HString const& id);

  /// Reads a box file.
  static Problem read(HString const& file, QXPPolicyMorvaClustBox& box);
};

}  // namespace tool
