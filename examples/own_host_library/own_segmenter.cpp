// A word segmenter in place of the host kit's: it defines all that host/HJieba.h and
// host/HStutterDict.h declare, and what must be promised stands there too.
//
// This one is as small as can be, and knows no dictionary. A run of letters and digits is a word,
// and of Chinese text each pair of neighbouring characters; a word weighs its count over that of
// the most frequent one.
#include <algorithm>
#include <map>
#include <string_view>

#include <host/HFile.h>
#include <host/HJieba.h>
#include <host/HStutterDict.h>

namespace {

bool is_han(wchar_t c) {
  return c >= 0x4E00 && c <= 0x9FFF;
}

// By ranges of Unicode: results must not depend on the locale of the process.
bool is_letter(wchar_t c) {
  bool const is_ascii =
      (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
  return is_ascii || (c >= 0xC0 && c < 0x2000);
}

// A text cut without a gap: runs of letters, and all other characters one by one.
std::vector<std::wstring_view> tokens_of(std::wstring_view text) {
  std::vector<std::wstring_view> tokens;
  while (!text.empty()) {
    auto const end = std::find_if_not(text.begin(), text.end(), is_letter);
    auto const length = std::max<std::size_t>(1, static_cast<std::size_t>(end - text.begin()));
    tokens.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return tokens;
}

HString text_of(std::wstring_view text) {
  return {text.data(), static_cast<int>(text.size())};
}

std::map<HString, int> count_words(std::wstring_view text) {
  std::map<HString, int> counts;
  std::wstring_view previous;
  for (std::wstring_view const token : tokens_of(text)) {
    if (is_han(token.front()) && !previous.empty() && is_han(previous.front())) {
      ++counts[text_of({previous.data(), 2})];  // the two lie side by side in the text
    } else if (token.size() > 1) {
      ++counts[text_of(token)];
    }
    previous = token;
  }
  return counts;
}

}  // namespace

HStutterDict::HStutterDict() = default;

HStutterDict* HStutterDict::ins() {
  return pins();
}

HStutterDict* HStutterDict::pins() {
  static auto* const one = new HStutterDict;  // never freed, as all singletons here
  return one;
}

void HStutterDict::set_dict_path(HString const& directory) {
  mstr_dict_path = directory;
}

bool HStutterDict::is_exist_dict() const {
  return true;  // none is needed; false would mean that no words can be had
}

HJieba* HJieba::ins() {
  return pins();
}

HJieba* HJieba::pins() {
  static auto* const one = new HJieba;
  return one;
}

int HJieba::Init() {
  return 0;
}

void HJieba::textrank_extractor(HString const& file, std::vector<WordNode>& words,
                                unsigned long const& top, bool const& reserved) {
  HString text;
  HFile::GetFileContentAny(file, text);
  textrank_extractor(text, file, words, top, reserved);
}

void HJieba::textrank_extractor(HString const& text, HString const& /*name*/,
                                std::vector<WordNode>& words, unsigned long const& top,
                                bool const& /*reserved*/) {
  words.clear();
  int most = 1;
  for (auto const& [word, count] : count_words(text_view(text))) {
    WordNode& node = words.emplace_back();
    node.word = word;
    node.count = count;
    most = std::max(most, count);
  }
  for (WordNode& node : words) {
    node.weight = static_cast<double>(node.count) / most;
  }
  // By falling weight, and words of one weight in the order in which the map has them.
  std::stable_sort(words.begin(), words.end(),
                   [](WordNode const& a, WordNode const& b) { return a.weight > b.weight; });
  words.resize(std::min<std::size_t>(words.size(), top));
}

bool HJieba::cut(HString const& text, std::vector<HString>& tokens) {
  tokens.clear();
  for (std::wstring_view const token : tokens_of(text_view(text))) {
    tokens.push_back(text_of(token));
  }
  return true;
}
