#include "box/internal/class_texts.h"

#include <algorithm>
#include <utility>

#include "box/internal/weight_order.h"

namespace morva {

namespace {

constexpr double strong_weight = 0.9;
constexpr std::size_t most_described = 10;
constexpr std::size_t most_listed = 100;

std::vector<double> mean_weights(HPointN sum, std::size_t members) {
  sum /= static_cast<unsigned long>(members);
  return std::move(sum.vt_data);
}

}  // namespace

ClassTexts::ClassTexts(std::vector<HString> const& words, HPointN sum, std::size_t members)
    : words_(words),
      weights_(mean_weights(std::move(sum), members)),
      order_(order_by_weight(weights_)) {}

HString ClassTexts::description() const {
  HString text;
  for (std::size_t const i : order_) {
    if (weights_[i] >= strong_weight) {
      text << words_[i] << L" ";
    }
  }
  if (text.not_empty()) {
    return text;
  }
  for (std::size_t k = 0; k < std::min(order_.size(), most_described); ++k) {
    text << words_[order_[k]] << L" ";
  }
  return text;
}

HString ClassTexts::listing() const {
  HString text;
  for (std::size_t k = 0; k < std::min(order_.size(), most_listed); ++k) {
    std::size_t const i = order_[k];
    text << words_[i] << L"(" << HString(weights_[i]) << L")" << L"\n";
  }
  return text;
}

void fill_texts(HClusterResultBase& node, int index, std::vector<HString> const& words,
                HPointN const& sum, std::size_t members) {
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

}  // namespace morva
