#include "cppjieba_peer.h"

#include <vector>

#include <cppjieba/TextRankExtractor.hpp>

namespace {

std::string file(char const* name) {
  return std::string(MORVA_CPPJIEBA_DICT_DIR) + '/' + name;
}

/// Cuts into ranges of characters; the base class is asked for strings.
class RangeSegment : public cppjieba::MixSegment {
 public:
  using MixSegment::MixSegment;

  std::size_t count(std::string const& text) const {
    cppjieba::PreFilter filter(symbols_, text);
    std::vector<cppjieba::WordRange> ranges;
    ranges.reserve(text.size() / 2);
    while (filter.HasNext()) {
      cppjieba::PreFilter::Range const range = filter.Next();
      Cut(range.begin, range.end, ranges, true);
    }
    return ranges.size();
  }

 private:
  using MixSegment::Cut;
};

}  // namespace

struct CppjiebaPeer::Parts {
  Parts()
      : words(file("jieba.dict.utf8"), file("user.dict.utf8")),
        model(file("hmm_model.utf8")),
        segmenter(&words, &model) {}

  cppjieba::DictTrie words;
  cppjieba::HMMModel model;
  RangeSegment segmenter;
  std::unique_ptr<cppjieba::TextRankExtractor> text_rank;
};

CppjiebaPeer::CppjiebaPeer(Load load) : parts_(std::make_unique<Parts>()) {
  if (load == Load::segmenter_and_text_rank) {
    parts_->text_rank = std::make_unique<cppjieba::TextRankExtractor>(
        &parts_->words, &parts_->model, file("stop_words.utf8"));
  }
}

CppjiebaPeer::~CppjiebaPeer() = default;

std::size_t CppjiebaPeer::count_tokens(std::string const& text) const {
  return parts_->segmenter.count(text);
}

std::size_t CppjiebaPeer::count_keywords(std::string const& text, std::size_t top) const {
  std::vector<cppjieba::TextRankExtractor::Word> keywords;
  parts_->text_rank->Extract(text, keywords, top);
  return keywords.size();
}
