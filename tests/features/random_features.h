#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "features/HFeatureNode.h"

namespace test {

/// Records in which lists and maps agree in part only, over few words, with all kinds of weights.
class RandomFeatures {
 public:
  explicit RandomFeatures(unsigned int seed) : random_(seed) {}

  std::vector<HFeatureNode> make() {
    std::vector<HFeatureNode> features(below(8));
    for (HFeatureNode& node : features) {
      node.str_file_id = L"id";
      for (std::size_t count = below(12); count > 0; --count) {
        HString const text = word();
        if (below(5) != 0) {
          node.vt_words.push_back(text);
        }
        if (below(5) != 0) {
          node.map_word_weight[text] = weight();
        }
      }
    }
    return features;
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }
  HString word() {
    std::wstring text(below(3), L' ');
    std::generate(text.begin(), text.end(),
                  [this] { return std::wstring(L"ab\u4E2D\U0002A700").at(below(4)); });
    return {text.c_str(), static_cast<int>(text.size())};
  }
  double weight() {
    std::vector<double> const weights{
        0.0, -0.0, 1.0, 0.1, -2.5, 1e-320, 1e300, std::numeric_limits<double>::quiet_NaN()};
    return weights.at(below(weights.size()));
  }

  std::mt19937 random_;
};

}  // namespace test
