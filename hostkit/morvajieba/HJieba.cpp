#include "host/HJieba.h"

#include <map>
#include <string_view>
#include <vector>

#include "host/HStutterDict.h"
#include "host/native_path.h"
#include "host/utf8.h"
#include "morvajieba/engine.h"
#include "morvajieba/text_rank.h"

namespace {

using morvajieba::Engine;

/// The one engine, as there is one dictionary directory at a time. Never freed, like the
/// singletons.
Engine& engine() {
  static Engine* const one = new Engine;
  return *one;
}

bool load_dictionary() {
  auto const directory = morvabs::to_path(HStutterDict::pins()->mstr_dict_path);
  return directory && engine().load(*directory);
}

HString to_string(std::wstring_view text) {
  return HString(text.data(), static_cast<int>(text.size()));
}

/// The few parts of speech as strings, made once for all words of a list.
class TagStrings {
 public:
  HString const& of(std::string_view tag) {
    auto const found = strings_.find(tag);
    return found != strings_.end()
               ? found->second
               : strings_.emplace(tag, HString(morvabs::from_utf8(tag).c_str())).first->second;
  }

 private:
  std::map<std::string_view, HString> strings_;
};

void deliver(morvajieba::TextRank& text_rank, unsigned long top, std::vector<WordNode>& words) {
  std::vector<morvajieba::Keyword> const keywords = text_rank.rank(top);
  TagStrings tags;
  words.reserve(keywords.size());
  for (morvajieba::Keyword const& keyword : keywords) {
    WordNode& node = words.emplace_back();
    node.word = to_string(keyword.text);
    node.tag = tags.of(engine().lexicon().tag(keyword.text));
    node.count = static_cast<std::int32_t>(keyword.count);
    node.weight = keyword.weight;
  }
}

class TokenList : public morvajieba::TokenSink {
 public:
  explicit TokenList(std::vector<HString>& tokens) : tokens_(tokens) {}
  void token(std::wstring_view text) override { tokens_.push_back(to_string(text)); }

 private:
  std::vector<HString>& tokens_;
};

}  // namespace

HJieba* HJieba::ins() {
  return pins();
}

HJieba* HJieba::pins() {
  static auto* const one = new HJieba;
  return one;
}

int HJieba::Init() {
  return load_dictionary() ? 0 : -1;
}

void HJieba::textrank_extractor(HString const& file, std::vector<WordNode>& words,
                                unsigned long const& top, bool const& /*reserved*/) {
  words.clear();
  if (!load_dictionary()) return;
  morvajieba::TextRank text_rank(engine().stop_words());
  if (engine().cut_file(file, text_rank)) deliver(text_rank, top, words);
}

void HJieba::textrank_extractor(HString const& text, HString const& /*name*/,
                                std::vector<WordNode>& words, unsigned long const& top,
                                bool const& /*reserved*/) {
  words.clear();
  if (!load_dictionary()) return;
  morvajieba::TextRank text_rank(engine().stop_words());
  engine().cut(text, text_rank);
  deliver(text_rank, top, words);
}

bool HJieba::cut(HString const& text, std::vector<HString>& tokens) {
  tokens.clear();
  if (!load_dictionary()) return false;
  TokenList list(tokens);
  engine().cut(text, list);
  return true;
}
