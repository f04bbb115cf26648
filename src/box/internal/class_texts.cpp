#include "box/internal/class_texts.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace morva {

namespace {

constexpr double strong_weight = 0.9;
constexpr std::size_t most_described = 10;
constexpr std::size_t most_listed = 100;

// Of all weights in their order, those that a text can show.
std::vector<PlacedWeight> shown(std::vector<PlacedWeight> weights) {
  std::size_t const listed = std::min(weights.size(), most_listed);
  weights.erase(
      std::remove_if(weights.begin() + static_cast<std::ptrdiff_t>(listed), weights.end(),
                     [](PlacedWeight const& one) { return !(one.weight >= strong_weight); }),
      weights.end());
  return weights;
}

std::vector<PlacedWeight> heaviest_of(HPointN sum, std::size_t members) {
  sum /= static_cast<unsigned long>(members);
  std::vector<PlacedWeight> weights;
  weights.reserve(sum.vt_data.size());
  for (std::size_t const i : order_by_weight(sum.vt_data)) {
    weights.push_back({i, sum.vt_data[i]});
  }
  return shown(std::move(weights));
}

std::vector<PlacedWeight> heaviest_of(SparsePoint const& sum, std::size_t members) {
  std::vector<PlacedWeight> weights;
  weights.reserve(sum.values.size());
  for (std::size_t k = 0; k < sum.values.size(); ++k) {
    weights.push_back({sum.columns[k], sum.values[k] / static_cast<double>(members)});
  }
  bool const has_order =
      members != 0 && std::none_of(weights.begin(), weights.end(),
                                   [](PlacedWeight const& one) { return std::isnan(one.weight); });
  return has_order ? shown(first_by_weight(std::move(weights), static_cast<std::size_t>(sum.n),
                                           most_listed))
                   : heaviest_of(expand(sum), members);
}

template <typename Sum>
void fill(HClusterResultBase& node, int index, std::vector<HString> const& words, Sum const& sum,
          std::size_t members) {
  node.str_class_id = HString::generateUUID();
  node.str_class_name.clear();
  node.str_class_name << L"分类" << HString(index, false);
  if (members == 0) {
    // There is no mean to share, and each text reports that on its own.
    node.str_class_desc = ClassTexts(words, sum, members).description();
    node.str_class_feature = ClassTexts(words, sum, members).listing();
    return;
  }
  ClassTexts const texts(words, sum, members);
  node.str_class_desc = texts.description();
  node.str_class_feature = texts.listing();
}

}  // namespace

ClassTexts::ClassTexts(std::vector<HString> const& words, HPointN sum, std::size_t members)
    : words_(words), heaviest_(heaviest_of(std::move(sum), members)) {}

ClassTexts::ClassTexts(std::vector<HString> const& words, SparsePoint const& sum,
                       std::size_t members)
    : words_(words), heaviest_(heaviest_of(sum, members)) {}

HString ClassTexts::description() const {
  HString text;
  for (auto const& [position, weight] : heaviest_) {
    if (weight >= strong_weight) {
      text << words_[position] << L" ";
    }
  }
  if (text.not_empty()) {
    return text;
  }
  for (auto const& one : std::span(heaviest_).first(std::min(heaviest_.size(), most_described))) {
    text << words_[one.position] << L" ";
  }
  return text;
}

HString ClassTexts::listing() const {
  HString text;
  for (auto const& [position, weight] :
       std::span(heaviest_).first(std::min(heaviest_.size(), most_listed))) {
    text << words_[position] << L"(" << HString(weight) << L")" << L"\n";
  }
  return text;
}

void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                HPointN const& sum, std::size_t members) {
  fill(node, index, words, sum, members);
}

void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                SparsePoint const& sum, std::size_t members) {
  fill(node, index, words, sum, members);
}

}  // namespace morva
