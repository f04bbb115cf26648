#include "features/HFeatureNode.h"

#include <algorithm>
#include <cstddef>

HFeatureNode::HFeatureNode() = default;

void HFeatureNode::clear() {
  vt_words.clear();
  vt_counts.clear();
  vt_weight.clear();
  map_word_weight.clear();
}

bool HFeatureNode::find_index(HString const& word, int& index) const {
  auto const found = std::find(vt_words.begin(), vt_words.end(), word);
  if (found == vt_words.end()) {
    return false;
  }
  index = static_cast<int>(found - vt_words.begin());
  return true;
}

double HFeatureNode::get_weight(int const& index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= vt_weight.size()) {
    return 0.0;
  }
  return vt_weight[static_cast<std::size_t>(index)];
}
