#include "classify/HFileMatchClassifyBase.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>

HFileMatchClassifyBase::HFileMatchClassifyBase() = default;
HFileMatchClassifyBase::~HFileMatchClassifyBase() = default;

void HFileMatchClassifyBase::combine_vt_words(std::vector<HString> const& vt_class_words,
                                              HFeatureNode const& node,
                                              std::vector<HString>& vt_out) const {
  std::set<HString> const known(vt_class_words.begin(), vt_class_words.end());
  std::vector<HString> words = vt_class_words;
  std::copy_if(node.vt_words.begin(), node.vt_words.end(), std::back_inserter(words),
               [&known](HString const& word) { return !known.contains(word); });
  vt_out.insert(vt_out.end(), words.begin(), words.end());
}

void HFileMatchClassifyBase::get_vt_node_data(std::vector<HString> const& vt_words,
                                              HFeatureNode const& node,
                                              std::vector<double>& vt_out) const {
  get_vt_data(vt_words, node.vt_words, node.vt_weight, vt_out);
}

void HFileMatchClassifyBase::get_vt_data(std::vector<HString> const& vt_words,
                                         std::vector<HString> const& vt_source_words,
                                         std::vector<double> const& vt_source_weight,
                                         std::vector<double>& vt_out) const {
  std::map<HString, double> weights;
  std::size_t const count = std::min(vt_source_words.size(), vt_source_weight.size());
  for (std::size_t i = 0; i < count; ++i) {
    weights.insert_or_assign(vt_source_words[i], vt_source_weight[i]);
  }
  vt_out.resize(vt_words.size());
  for (std::size_t i = 0; i < vt_words.size(); ++i) {
    auto const found = weights.find(vt_words[i]);
    vt_out[i] = found == weights.end() ? 0.0 : found->second;
  }
}
