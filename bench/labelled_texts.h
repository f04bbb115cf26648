#pragma once

#include <string>
#include <vector>

#include "features/HFeatureNode.h"

namespace bench {

/// Texts with the class that a person gave each, and their records with words and wide
/// fingerprint.
struct LabelledTexts {
  std::string name;
  std::vector<HFeatureNode> records;
  /// The class of each record, from 0.
  std::vector<int> labels;
  int class_count = 0;
  /// The name of each class; empty for versions.
  std::vector<std::string> class_names;
  /// Files that gave no words.
  int failed_count = 0;
};

/// The sets below `text` in the folder that MORVA_CORPUS names: each folder there is a set, each
/// folder in that a class, and the first `most_per_class` files of a class in order of their names
/// count. Empty where the variable is not set or there is no such folder.
std::vector<LabelledTexts> load_labelled_texts(int most_per_class);

/// The first texts of each class of all sets, each whole and in three versions that lack a fifth of
/// its sentences, every version another. A class is a text with its versions.
LabelledTexts load_versions(int texts_per_class);

}  // namespace bench
