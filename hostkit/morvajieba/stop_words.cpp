#include "morvajieba/stop_words.h"

#include <algorithm>

#include "host/utf8.h"
#include "morvajieba/characters.h"

namespace morvajieba {

namespace {

constexpr std::size_t most_words = 200'000;

std::wstring lower(std::wstring_view word) {
  std::wstring result(word.size(), L'\0');
  std::transform(word.begin(), word.end(), result.begin(),
                 [](wchar_t character) { return to_lower(fold_width(character)); });
  return result;
}

std::string_view strip(std::string_view line) {
  constexpr std::string_view blanks = " \t\r";
  std::size_t const first = line.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

}  // namespace

StopWords::StopWords() {
  std::wstring_view rest = builtin_stop_words;
  while (!rest.empty()) {
    std::size_t const end = std::min(rest.find(L' '), rest.size());
    builtin_.insert(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

void StopWords::load(std::string_view content) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (content.starts_with(mark)) content.remove_prefix(mark.size());
  while (!content.empty() && own_.size() < most_words) {
    std::size_t const end = std::min(content.find('\n'), content.size());
    std::string_view const line = strip(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
    if (!line.empty() && morvabs::is_utf8(line)) own_.insert(lower(morvabs::from_utf8(line)));
  }
}

bool StopWords::contains(std::wstring_view word) const {
  std::wstring const key = lower(word);
  return builtin_.contains(key) || own_.contains(key);
}

}  // namespace morvajieba
