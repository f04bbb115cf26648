#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

/// Code points as unsigned values.
struct CodePointOrder {
  bool operator()(std::wstring const& left, std::wstring const& right) const {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(), [](wchar_t a, wchar_t b) {
          return static_cast<std::uint32_t>(a) < static_cast<std::uint32_t>(b);
        });
  }
};

struct RankedWord {
  std::wstring text;
  std::uint32_t count;
  double weight;

  bool operator==(RankedWord const&) const = default;
};

/// TextRank as it reads in the definition: ordered maps from word to word, every sum in their
/// order.
inline std::vector<RankedWord> rank_words(
    std::vector<std::wstring> const& tokens,
    std::function<bool(std::wstring const&)> const& is_candidate, std::size_t top) {
  std::vector<std::wstring> candidates;
  std::copy_if(tokens.begin(), tokens.end(), std::back_inserter(candidates), is_candidate);
  std::map<std::wstring, std::map<std::wstring, double, CodePointOrder>, CodePointOrder> graph;
  std::map<std::wstring, std::uint32_t, CodePointOrder> counts;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    graph[candidates[i]];
    ++counts[candidates[i]];
    for (std::size_t j = i + 1; j < std::min(i + 5, candidates.size()); ++j) {
      graph[candidates[i]][candidates[j]] += 1;
      graph[candidates[j]][candidates[i]] += 1;
    }
  }
  double const d = 0.85;
  std::map<std::wstring, double, CodePointOrder> weights;
  std::map<std::wstring, double, CodePointOrder> sums;
  for (auto const& [word, row] : graph) {
    weights[word] = 1.0 / static_cast<double>(graph.size());
    for (auto const& [neighbour, weight] : row) sums[word] += weight;
  }
  for (int round = 0; round < 10; ++round) {
    for (auto const& [word, row] : graph) {
      double s = 0.0;
      for (auto const& [neighbour, weight] : row)
        s += weight / sums[neighbour] * weights[neighbour];
      weights[word] = (1 - d) + d * s;
    }
  }
  double least = std::numeric_limits<double>::max();
  double greatest = std::numeric_limits<double>::min();
  for (auto const& [word, weight] : weights) {
    least = std::min(least, weight);
    greatest = std::max(greatest, weight);
  }
  std::vector<RankedWord> ranked;
  for (auto const& [word, weight] : weights) {
    ranked.push_back({word, counts[word], (weight - least / 10.0) / (greatest - least / 10.0)});
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](auto const& a, auto const& b) { return a.weight > b.weight; });
  ranked.resize(std::min(ranked.size(), top));
  return ranked;
}

}  // namespace reference
