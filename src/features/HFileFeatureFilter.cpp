#include "features/HFileFeatureFilter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace {

/// The words of the active keywords in order, to be searched by halving.
std::vector<HString> active_texts(std::vector<HFilterKeyword> const& keywords) {
  std::vector<HString> texts;
  for (HFilterKeyword const& keyword : keywords) {
    if (keyword.check) {
      texts.push_back(keyword.text);
    }
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

/// Takes the marked positions out of a list, which may be shorter or longer than the marks.
template <typename Value>
void remove_marked(std::vector<Value>& list, std::vector<bool> const& marked) {
  std::size_t const known = std::min(list.size(), marked.size());
  std::size_t kept = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i < known && marked[i]) {
      continue;
    }
    if (kept != i) {
      list[kept] = std::move(list[i]);
    }
    ++kept;
  }
  list.resize(kept);
}

}  // namespace

HFileFeatureFilter::HFileFeatureFilter() = default;

void HFileFeatureFilter::Filter(HFileCollectFeatureNode& node) {
  std::vector<HString> const texts = active_texts(vt_keyword);
  auto const is_unwanted = [&](HString const& word) {
    return (mb_figure && (word.is_all_number() || word.is_like_double())) ||
           (mb_letter && is_all_letter(word)) ||
           (mb_figure && mb_letter && word.is_all_good_0x()) ||
           std::binary_search(texts.begin(), texts.end(), word);
  };
  std::vector<bool> unwanted(node.vt_words.size());
  std::transform(node.vt_words.begin(), node.vt_words.end(), unwanted.begin(), is_unwanted);
  remove_marked(node.vt_words, unwanted);
  remove_marked(node.vt_counts, unwanted);
  remove_marked(node.vt_weight, unwanted);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a value.
bool HFileFeatureFilter::is_all_letter(HString word) const {
  constexpr std::uint32_t case_bit = 0x20;
  for (int i = 0; i < word.length(); ++i) {
    std::uint32_t const upper = static_cast<std::uint32_t>(word[i]) & ~case_bit;
    if (upper < U'A' || upper > U'Z') {
      return false;
    }
  }
  return true;
}

HString HFileFeatureFilter::to_str() {
  HString text = L"mb_figure:";
  text << mb_figure << L", mb_letter:" << mb_letter;
  for (std::size_t i = 0; i < vt_keyword.size(); ++i) {
    text << L", vt_keyword[" << HString(i) << L"]: check:" << vt_keyword[i].check << L" text:"
         << vt_keyword[i].text;
  }
  return text;
}
