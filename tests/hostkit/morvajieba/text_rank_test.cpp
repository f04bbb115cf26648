#include "morvajieba/text_rank.h"

#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/utf8.h"
#include "hostkit/morvajieba/support.h"

#include "reference/textrank.h"

namespace {

using namespace morvajieba;
using namespace segmenter_test;
using reference::RankedWord;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

StopWords const& stop_words() {
  static auto const* const one = new StopWords;
  return *one;
}

bool is_candidate(std::wstring const& token) {
  bool const has_letter = std::any_of(token.begin(), token.end(), [](wchar_t character) {
    return is_letter_or_digit(classify(character));
  });
  return token.size() >= 2 && has_letter && !stop_words().contains(token);
}

std::vector<RankedWord> rank(std::vector<std::wstring> const& tokens, std::size_t top) {
  TextRank text_rank(stop_words());
  for (std::wstring const& token : tokens) text_rank.token(token);
  std::vector<RankedWord> result;
  for (Keyword const& keyword : text_rank.rank(top)) {
    result.push_back({std::wstring(keyword.text), keyword.count, keyword.weight});
  }
  return result;
}

std::vector<std::wstring> words_of(std::vector<RankedWord> const& ranked) {
  std::vector<std::wstring> words;
  words.reserve(ranked.size());
  for (RankedWord const& word : ranked) words.push_back(word.text);
  return words;
}

/// Tokens with few and with many distinct words, stop words, signs, and characters of all ranges.
std::vector<std::wstring> random_tokens(std::uint32_t seed) {
  std::mt19937 random(seed);
  std::size_t const distinct = 1 + random() % (seed % 3 == 0 ? 2000 : 30);
  std::vector<std::wstring> vocabulary = {L"the", L"我们", L"，", L"a", L"--"};
  while (vocabulary.size() < distinct + 5) {
    std::wstring word;
    for (std::uint32_t i = 0; i < 1 + random() % 4; ++i) {
      constexpr wchar_t alphabets[] = {L'a', L'A', L'0', L'一', L'国', L'é', L'я', L'あ'};
      word += static_cast<wchar_t>(alphabets[random() % 8] + static_cast<wchar_t>(random() % 9));
    }
    vocabulary.push_back(word);
  }
  std::vector<std::wstring> tokens;
  for (std::uint32_t i = 0; i < random() % 5000; ++i) {
    // Some words far more often than others.
    std::size_t const range = 1 + random() % vocabulary.size();
    tokens.push_back(vocabulary[random() % range]);
  }
  return tokens;
}

TEST(TextRank, of_nothing_is_nothing) {
  EXPECT_THAT(rank({}, 10), IsEmpty());
}

TEST(TextRank, of_signs_alone_is_nothing) {
  EXPECT_THAT(rank({L"--", L"，", L"..."}, 10), IsEmpty());
}

TEST(TextRank, of_one_word_has_weight_one) {
  EXPECT_THAT(rank({L"文件"}, 10), ElementsAre(RankedWord{L"文件", 1, 1.0}));
}

TEST(TextRank, of_a_repeated_word_counts_it) {
  EXPECT_THAT(rank({L"文件", L"文件", L"文件"}, 10), ElementsAre(RankedWord{L"文件", 3, 1.0}));
}

TEST(TextRank, leaves_out_single_characters) {
  EXPECT_THAT(rank({L"中", L"a"}, 10), IsEmpty());
}

TEST(TextRank, leaves_out_stop_words_of_any_case) {
  EXPECT_THAT(rank({L"The", L"THE", L"我们"}, 10), IsEmpty());
}

TEST(TextRank, tells_words_of_different_case_apart) {
  EXPECT_THAT(words_of(rank({L"Data", L"data"}, 10)), UnorderedElementsAre(L"Data", L"data"));
}

TEST(TextRank, gives_the_best_word_weight_one) {
  std::vector<RankedWord> const ranked = rank(random_tokens(3), 5);
  ASSERT_FALSE(ranked.empty());
  EXPECT_EQ(ranked.front().weight, 1.0);
}

TEST(TextRank, gives_nothing_for_top_zero) {
  EXPECT_THAT(rank({L"文件", L"数据"}, 0), IsEmpty());
}

TEST(TextRank, gives_all_words_for_a_top_beyond_them) {
  EXPECT_EQ(rank({L"文件", L"数据", L"系统"}, 100'000).size(), 3u);
}

TEST(TextRank, orders_words_of_equal_weight_by_code_points) {
  // Five words around a ring, all alike.
  std::vector<std::wstring> tokens;
  for (int i = 0; i < 2; ++i) {
    for (wchar_t const* const word : {L"国家", L"éé", L"bb", L"BB", L"𐐀𐐀"})
      tokens.emplace_back(word);
  }
  std::vector<RankedWord> const ranked = rank(tokens, 10);
  for (std::size_t i = 1; i < ranked.size(); ++i) {
    if (ranked[i - 1].weight == ranked[i].weight) {
      EXPECT_TRUE(reference::CodePointOrder()(ranked[i - 1].text, ranked[i].text));
    }
  }
}

TEST(TextRank, has_as_its_best_words_the_beginning_of_any_longer_list) {
  std::vector<std::wstring> const tokens = random_tokens(6);
  std::vector<RankedWord> const all = rank(tokens, 100'000);
  for (std::size_t const top : {1u, 2u, 10u, 100u}) {
    std::vector<RankedWord> const expected(
        all.begin(),
        all.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(top, all.size())));
    EXPECT_EQ(rank(tokens, top), expected);
  }
}

TEST(TextRank, equals_the_plain_form_bit_for_bit_on_random_tokens) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    std::vector<std::wstring> const tokens = random_tokens(seed);
    EXPECT_EQ(rank(tokens, 100'000), reference::rank_words(tokens, is_candidate, 100'000)) << seed;
  }
}

// The plain form is slow: so much of each text will do, and less where it takes ten times as long.
#ifdef MORVA_SANITIZED
constexpr std::size_t beginning = 10'000;
#else
constexpr std::size_t beginning = 50'000;
#endif

TEST(TextRank, equals_the_plain_form_bit_for_bit_on_real_text) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) GTEST_SKIP() << "MORVA_CORPUS is not set";
  Dictionary dictionary;
  ASSERT_TRUE(dictionary.open(built_dictionary()));
  Lexicon const lexicon(dictionary);
  for (auto const& entry :
       std::filesystem::directory_iterator(std::filesystem::path(corpus) / "long")) {
    Segmenter segmenter(lexicon);
    TokenList list;
    segmenter.cut(morvabs::from_utf8(read_all(entry.path().string())).substr(0, beginning), list);
    EXPECT_EQ(rank(list.tokens, 100'000), reference::rank_words(list.tokens, is_candidate, 100'000))
        << entry.path();
  }
}

}  // namespace
