#include "morvajieba/word_table.h"

#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using morvajieba::WordTable;

/// Words of up to five characters from an alphabet in which much is alike: the NUL, and values
/// beyond all code points.
std::vector<std::wstring> random_words(std::uint32_t seed) {
  constexpr std::uint32_t alphabet[] = {0,        1,        L'a',     L'国',     0x10FFFF,
                                        0x1FFFFE, 0x1FFFFF, 0x200000, 0xFFFFFFFF};
  std::minstd_rand random(seed);
  std::vector<std::wstring> words(3000);
  for (std::wstring& word : words) {
    for (auto left = random() % 6; left > 0; --left) {
      word += static_cast<wchar_t>(alphabet[random() % std::size(alphabet)]);
    }
  }
  return words;
}

TEST(WordTable, numbers_words_by_their_first_appearance) {
  WordTable table;
  for (wchar_t const* const word : {L"b", L"a", L"b", L"abcdef"}) table.add(word);
  EXPECT_EQ(table.text(0), L"b");
  EXPECT_EQ(table.text(1), L"a");
  EXPECT_EQ(table.text(2), L"abcdef");
}

TEST(WordTable, counts_each_word_for_itself) {
  std::vector<std::wstring> const words = random_words(1);
  WordTable table;
  std::map<std::wstring, std::uint32_t> expected;
  for (std::wstring const& word : words) {
    table.add(word);
    ++expected[word];
  }
  ASSERT_EQ(table.size(), expected.size());
  for (std::uint32_t number = 0; number < table.size(); ++number) {
    EXPECT_EQ(table.count(number), expected.at(std::wstring(table.text(number))));
  }
}

TEST(WordTable, contains_nothing_at_first) {
  EXPECT_FALSE(WordTable().contains(L""));
}

TEST(WordTable, contains_what_was_added_and_nothing_else) {
  WordTable table;
  std::map<std::wstring, bool> added;
  for (std::wstring const& word : random_words(2)) {
    auto const [entry, is_new] = added.emplace(word, added.size() % 2 == 0);
    if (is_new && entry->second) table.add(word);
  }
  for (auto const& [word, was_added] : added) EXPECT_EQ(table.contains(word), was_added);
}

}  // namespace
