#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "boxes.h"
#include "features/HFeatureNode.h"
#include "host/QXPPolicyMorvaClustBox.h"

#include "reference/classify.h"
#include "reference/random_matrix.h"

namespace test {

/// Boxes and documents that are meant to be hard: few words and ids of few characters, so that they
/// meet and repeat, lists of wrong length, special weights, limits right at a distance.
class RandomBoxes {
 public:
  explicit RandomBoxes(reference::RandomMatrix& random) : random_(random) {}

  /// A box with classes of both kinds over these rows, with radii around the distances from `node`.
  QXPPolicyMorvaClustBox box(reference::Matrix const& rows, HFeatureNode const& node,
                             std::vector<HString> const& words) {
    QXPPolicyMorvaClustBox box;
    box.vt_words = words;
    box.i_cluster_type = random_.one_in(20) ? 2 : random_.integer(0, 1);
    bool const is_dna = random_.one_in(5);
    bool const has_unequal = random_.one_in(10);
    for (reference::Point const& row : rows) {
      QXPKMeansNode& each = box.vt_kmeans_node.emplace_back();
      each.str_class_id = id();
      each.str_class_name = HString(L"name ") + HString(random_.integer(1, 99), false);
      each.vt_weight = row;
      each.vt_weight.resize(words.size() + (has_unequal && random_.one_in(3) ? 1 : 0));
      each.d_radius = limit(node, words, each.vt_weight);
      each.str_dna = is_dna ? dna() : HString();
    }
    for (std::size_t next = 0; next < rows.size();) {
      QXPDBScanNode& each = box.vt_dbscan_node.emplace_back();
      each.str_class_id = id();
      each.str_class_name = HString(L"name ") + HString(random_.integer(1, 99), false);
      each.i_minpts = random_.integer(-1, 5);
      each.d_eps = limit(node, words, rows[next]);
      for (int left = random_.integer(0, 6); left > 0 && next < rows.size(); --left) {
        std::vector<double>& list = each.vt_file_node.emplace_back().vt_weight;
        list = rows[next++];
        list.resize(words.size() + (random_.one_in(12) ? 1 : 0));
      }
    }
    return box;
  }

  /// Words for lists of this length, ascending and each once, or as they come.
  std::vector<HString> words(std::size_t count) {
    std::vector<HString> list;
    if (random_.one_in(3)) {
      while (list.size() < count) {
        list.push_back(word());
      }
      return list;
    }
    std::set<HString> distinct;
    while (distinct.size() < count) {
      distinct.insert(word());
    }
    list.assign(distinct.begin(), distinct.end());
    return list;
  }

  /// A document near to one of the rows or to none, with words of its own, and with a map that does
  /// not always agree with its list.
  HFeatureNode node(reference::Matrix const& rows, std::vector<HString> const& words) {
    HFeatureNode node;
    reference::Point const& row = random_.pick(rows);
    int const share = random_.integer(1, 4);
    for (std::size_t i = 0; i < std::min(row.size(), words.size()); ++i) {
      if (share > 1 && random_.one_in(share)) {
        continue;
      }
      add(words[i], random_.one_in(6) ? random_.pick(row) : row[i], node);
    }
    for (int left = random_.one_in(3) ? random_.integer(1, 12) : 0; left > 0; --left) {
      add(word(), random_.unit(), node);
    }
    if (random_.one_in(12)) {
      node.map_word_weight[word()] = random_.pick(special_weights());
    }
    if (random_.one_in(3) && !node.vt_words.empty()) {
      node.vt_words.pop_back();
    }
    node.str_dna = dna();
    return node;
  }

  HString id() { return std::wstring(1, L"abcd"[random_.integer(0, 3)]).c_str(); }
  std::vector<HString> ids() {
    std::vector<HString> list;
    for (int left = random_.integer(0, 5); left > 0; --left) {
      list.push_back(random_.one_in(8) ? HString(L"e") : id());
    }
    return list;
  }

 private:
  static std::vector<double> special_weights() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return {infinity, std::numeric_limits<double>::quiet_NaN(), 1e200, 1e-200, -0.0, 1e18};
  }
  void add(HString const& word, double weight, HFeatureNode& node) {
    if (!random_.one_in(20)) {
      node.vt_words.push_back(word);
      node.vt_weight.push_back(weight);
    }
    if (!random_.one_in(20)) {
      node.map_word_weight[word] = weight;
    }
  }
  HString word() {
    static constexpr std::array<unsigned int, 12> characters{
        'a', 'b',      'c',      'd',      0x4E2D,     0x6587,
        0,   0x10FFFF, 0x1FFFFE, 0x1FFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
    std::wstring text;
    int const usual = random_.one_in(4) ? 11 : 5;
    for (int left = random_.integer(0, 6); left > 0; --left) {
      text.push_back(
          static_cast<wchar_t>(characters[static_cast<std::size_t>(random_.integer(0, usual))]));
    }
    return {text.data(), static_cast<int>(text.size())};
  }
  HString dna() {
    if (random_.one_in(4)) {
      return random_.one_in(2) ? L"" : L"abc";
    }
    return wide_dna(random_.pick(std::array{L"10000000", L"20000000", L"F0000000"}));
  }
  double limit(HFeatureNode const& node, std::vector<HString> const& words,
               std::vector<double> const& list) {
    if (random_.one_in(3)) {
      return random_.pick(std::array{0.0, -1.0, 1.0, 1e300, std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()});
    }
    std::vector<HPointN> const points =
        reference::dense_points({node, reference::feature_record({}, words, list)}, false);
    double const exact = HPointN::get_distance(points[0], points[1]);
    switch (random_.integer(0, 4)) {
      case 0:
        return exact;
      case 1:
        return exact - reference::match_tolerance;
      case 2:
        return std::nextafter(exact - reference::match_tolerance, 0.0);
      case 3:
        return exact * 2.0;
      default:
        return exact * random_.unit();
    }
  }

  reference::RandomMatrix& random_;
};

}  // namespace test
