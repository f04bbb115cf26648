#include "morvajieba/stop_words.h"

#include <algorithm>
#include <array>
#include <string>

#include "host/utf8.h"
#include "morvajieba/characters.h"

namespace morvajieba {

namespace {

constexpr std::size_t most_words = 200'000;

/// Writes the lower-case form of a word, as long as the word.
template <typename Iterator>
void lower(std::wstring_view word, Iterator out) {
  std::transform(word.begin(), word.end(), out,
                 [](wchar_t character) { return to_lower(fold_width(character)); });
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
    add(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

void StopWords::load(std::string_view content) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (content.starts_with(mark)) content.remove_prefix(mark.size());
  std::size_t const most = words_.size() + most_words;
  while (!content.empty() && words_.size() < most) {
    std::size_t const end = std::min(content.find('\n'), content.size());
    std::string_view const line = strip(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
    if (line.empty() || !morvabs::is_utf8(line)) continue;
    std::wstring word = morvabs::from_utf8(line);
    lower(word, word.begin());
    add(word);
  }
}

void StopWords::add(std::wstring_view word) {
  words_.add(word);
  longest_ = std::max(longest_, word.size());
}

bool StopWords::contains(std::wstring_view word) const {
  if (word.size() > longest_) return false;
  // Room for all but the odd ones of a user.
  std::array<wchar_t, 32> room;
  if (word.size() <= room.size()) {
    lower(word, room.begin());
    return words_.contains({room.data(), word.size()});
  }
  std::wstring key(word.size(), L'\0');
  lower(word, key.begin());
  return words_.contains(key);
}

}  // namespace morvajieba
