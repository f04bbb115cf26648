#pragma once

#include <cstddef>

#include "features/HFileFeatureFilter.h"

namespace reference {

/// Whether a word goes, test by test.
inline bool is_unwanted(HFileFeatureFilter const& filter, HString const& word) {
  if (filter.mb_figure && (word.is_all_number() || word.is_like_double())) {
    return true;
  }
  if (filter.mb_letter && filter.is_all_letter(word)) {
    return true;
  }
  if (filter.mb_figure && filter.mb_letter && word.is_all_good_0x()) {
    return true;
  }
  for (HFilterKeyword const& keyword : filter.vt_keyword) {
    if (keyword.check && word == keyword.text) {
      return true;
    }
  }
  return false;
}

/// The feature filter in the plainest way: a walk that takes out one entry at a time, of lists that
/// are equally long, and stays where it took one out.
inline void filter(HFileFeatureFilter const& settings, HFileCollectFeatureNode& node) {
  std::ptrdiff_t at = 0;
  while (at < static_cast<std::ptrdiff_t>(node.vt_words.size())) {
    if (is_unwanted(settings, node.vt_words[static_cast<std::size_t>(at)])) {
      node.vt_words.erase(node.vt_words.begin() + at);
      node.vt_counts.erase(node.vt_counts.begin() + at);
      node.vt_weight.erase(node.vt_weight.begin() + at);
    } else {
      ++at;
    }
  }
}

}  // namespace reference
