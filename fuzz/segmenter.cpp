#include "morvajieba/segmenter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/native_path.h"
#include "morvajieba/characters.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/lexicon.h"
#include "morvajieba/stop_words.h"
#include "morvajieba/text_feeder.h"
#include "morvajieba/text_rank.h"

#include "fuzz/require.h"
#include "fuzz/wide_text.h"
#include "reference/textrank.h"

// Any characters, cut with words of the user's own or without: no character is lost, pieces are cut
// as the whole is, and the ranking is that of the plain form to the last bit.

namespace {

using namespace morvajieba;
using fuzz::require;
using Words = std::vector<std::wstring>;

Dictionary const& dictionary() {
  static Dictionary* const one = [] {
    auto* const opened = new Dictionary;
    auto const directory = morvabs::to_path(HStutterDict::pins()->mstr_dict_path);
    require(directory && opened->open(*directory + "/morvajieba.dict"), "there is a dictionary");
    return opened;
  }();
  return *one;
}

class TokenList : public TokenSink {
 public:
  void token(std::wstring_view text) override { tokens.emplace_back(text); }
  Words tokens;
};

Words cut(Lexicon const& lexicon, std::wstring const& text) {
  TokenList list;
  Segmenter(lexicon).cut(text, list);
  return list.tokens;
}

Words cut_in_pieces(Lexicon const& lexicon, std::wstring_view text,
                    std::vector<std::size_t> const& lengths) {
  TokenList list;
  Segmenter segmenter(lexicon);
  TextFeeder feeder(segmenter, list);
  for (std::size_t const length : lengths) {
    feeder.feed(text.substr(0, length));
    text.remove_prefix(std::min(length, text.size()));
  }
  feeder.feed(text);
  feeder.finish();
  return list.tokens;
}

void check_cut(Lexicon const& lexicon, std::wstring const& text,
               std::vector<std::size_t> const& lengths) {
  Words const tokens = cut(lexicon, text);
  std::wstring joined;
  for (std::wstring const& token : tokens) {
    require(!token.empty(), "no token is empty");
    joined += token;
  }
  std::wstring folded = text;
  std::transform(folded.begin(), folded.end(), folded.begin(), fold_width);
  require(joined == folded, "the tokens are the text");
  require(cut_in_pieces(lexicon, text, lengths) == tokens, "pieces are cut as the whole is");
  for (std::wstring const& token : tokens) {
    require(lexicon.tag(token).size() < 9 || !lexicon.user_words().empty(), "a tag is short");
  }
}

void check_rank(StopWords const& stop_words, Words const& tokens) {
  auto const is_candidate = [&stop_words](std::wstring const& token) {
    return token.size() >= 2 && !stop_words.contains(token) &&
           std::any_of(token.begin(), token.end(),
                       [](wchar_t c) { return is_letter_or_digit(classify(c)); });
  };
  TextRank text_rank(stop_words);
  for (std::wstring const& token : tokens) {
    text_rank.token(token);
  }
  std::vector<reference::RankedWord> ranked;
  for (Keyword const& keyword : text_rank.rank(tokens.size())) {
    ranked.push_back({std::wstring(keyword.text), keyword.count, keyword.weight});
  }
  require(ranked == reference::rank_words(tokens, is_candidate, tokens.size()),
          "the ranking is that of the plain form");
}

// The whole path, with the words that the build has.
void check_interface(std::wstring const& text) {
  static Lexicon const* const plain = new Lexicon(dictionary());
  std::vector<HString> tokens;
  require(HJieba::pins()->cut(fuzz::string_of(text), tokens), "a text can be cut");
  Words words;
  for (HString const& token : tokens) {
    words.push_back(token.get_ws());
  }
  require(words == cut(*plain, text), "the interface cuts as the segmenter does");
  std::vector<WordNode> all;
  std::vector<WordNode> best;
  unsigned long const few = 3;
  HJieba::pins()->textrank_extractor(fuzz::string_of(text), HString(), all, text.size(), true);
  HJieba::pins()->textrank_extractor(fuzz::string_of(text), HString(), best, few, true);
  require(best.size() == std::min<std::size_t>(few, all.size()),
          "there are as many as were asked for");
  for (std::size_t i = 0; i < best.size(); ++i) {
    require(best[i].word == all[i].word && best[i].weight == all[i].weight,
            "fewer words are the first of more");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  std::vector<std::size_t> lengths(input.ConsumeIntegralInRange<std::size_t>(0, 5));
  for (std::size_t& length : lengths) {
    length = input.ConsumeIntegralInRange<std::size_t>(0, 40);
  }
  std::string const user_words = input.ConsumeRandomLengthString(200);
  std::string const more_stop_words = input.ConsumeRandomLengthString(60);
  std::wstring const text = fuzz::wide_text(input.ConsumeRemainingBytesAsString());
  Lexicon lexicon(dictionary());
  lexicon.load_user_words(user_words);
  check_cut(lexicon, text, lengths);
  StopWords stop_words;
  stop_words.load(more_stop_words);
  check_rank(stop_words, cut(lexicon, text));
  check_interface(text);
  return 0;
}
