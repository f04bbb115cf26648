#include "c/internal/document.h"

#include <algorithm>
#include <span>
#include <utility>

#include "host/utf8.h"

morva_document::morva_document(morva::c::Reading found, morva::c::Wants wants)
    : reading_(std::move(found)), wants_(wants) {
  std::size_t const most = wants.most_words == 0 ? reading_.words.size() : wants.most_words;
  std::size_t const count = std::min(most, reading_.words.size());
  std::vector<std::pair<std::size_t, std::size_t>> places;
  places.reserve(count);
  weights_.reserve(count);
  counts_.reserve(count);
  auto const add = [this](HString const& text) {
    std::size_t const place = texts_.size();
    morvabs::append_utf8(texts_, text_view(text));
    texts_ += '\0';
    return place;
  };
  for (WordNode const& node : std::span(reading_.words).first(count)) {
    std::size_t const word = add(node.word);
    places.emplace_back(word, add(node.tag));
    weights_.push_back(node.weight);
    counts_.push_back(node.count);
  }
  words_.reserve(count);
  tags_.reserve(count);
  for (auto const& [word, tag] : places) {
    words_.push_back(texts_.data() + word);
    tags_.push_back(texts_.data() + tag);
  }
}

HFeatureNode morva_document::record() const {
  HFeatureNode record;
  std::size_t const most = matches_by_all_words_ ? reading_.words.size() : morva::c::record_words;
  for (WordNode const& node :
       std::span(reading_.words).first(std::min(most, reading_.words.size()))) {
    record.vt_words.push_back(node.word);
    record.vt_counts.push_back(node.count);
    record.vt_weight.push_back(node.weight);
    record.map_word_weight[node.word] = node.weight;
  }
  record.str_dna = HString(reading_.wide_dna.c_str());
  return record;
}
