#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

#include "features/HFeatureNode.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace test {

/// A document with these words and weights.
inline HFeatureNode document(std::initializer_list<std::pair<HString, double>> words) {
  HFeatureNode node;
  for (auto const& [word, weight] : words) {
    node.vt_words.push_back(word);
    node.vt_counts.push_back(1);
    node.vt_weight.push_back(weight);
    node.map_word_weight[word] = weight;
  }
  return node;
}

inline QXPKMeansNode center(HString const& id, HString const& name, double radius,
                            std::vector<double> const& weights) {
  QXPKMeansNode node;
  node.str_class_id = id;
  node.str_class_name = name;
  node.d_radius = radius;
  node.vt_weight = weights;
  return node;
}

inline QXPPolicyMorvaClustBox kmeans_box(std::vector<HString> const& words,
                                         std::vector<QXPKMeansNode> const& classes) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = words;
  box.vt_kmeans_node = classes;
  return box;
}

inline QXPDBScanNode members(HString const& id, HString const& name, double eps, int minpts,
                             std::vector<std::vector<double>> const& lists) {
  QXPDBScanNode node;
  node.str_class_id = id;
  node.str_class_name = name;
  node.d_eps = eps;
  node.i_minpts = minpts;
  for (std::vector<double> const& list : lists) {
    node.vt_file_node.emplace_back().vt_weight = list;
  }
  return node;
}

inline QXPPolicyMorvaClustBox dbscan_box(std::vector<HString> const& words,
                                         std::vector<QXPDBScanNode> const& classes) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  box.vt_words = words;
  box.vt_dbscan_node = classes;
  return box;
}

/// A wide fingerprint of one field throughout, which has eight digits.
inline HString wide_dna(HString const& field) {
  HString dna;
  for (int i = 0; i < 128; ++i) {
    dna += field;
  }
  return dna;
}

}  // namespace test
