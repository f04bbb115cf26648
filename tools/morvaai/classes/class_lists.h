#pragma once

#include <optional>
#include <string>
#include <vector>

#include "morvaai.h"

namespace tool {

/// A folder of list files: for each class one that names its files, one a line, and one for the
/// files that are in no class. The lists are "class-0.txt" and so on, with as many digits as the
/// last one needs, and "unclassified.txt".
class ClassLists {
 public:
  explicit ClassLists(HString const& folder);

  /// Whether the path names a list file in this folder.
  bool is_list(HString const& path) const;

  /// Makes the folder where it is missing and writes a list for each class, and the other where
  /// `unclassified` is not empty; each file is replaced as a whole. The paths written, in order,
  /// or the reason for which not all could be.
  struct Written {
    std::vector<HString> paths;
    std::optional<std::string> problem;
  };
  Written write(std::vector<std::vector<HString>> const& classes,
                std::vector<HString> const& unclassified) const;

  /// Lists in the folder that are not among those written: a run with more classes left them.
  std::vector<HString> others_than(std::vector<HString> const& written) const;

 private:
  HString folder_;
};

}  // namespace tool
