#include "morvajieba/segmenter.h"

#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hostkit/morvajieba/support.h"
#include "morvajieba/text_feeder.h"

namespace {

using namespace morvajieba;
using namespace segmenter_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SegmenterTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(dictionary().open(built_dictionary())); }
  static Dictionary& dictionary() {
    static auto* const one = new Dictionary;
    return *one;
  }
  std::vector<std::wstring> cut(std::wstring_view text) {
    TokenList list;
    segmenter_.cut(text, list);
    return list.tokens;
  }
  /// What the feeder makes of the text in pieces of a given length.
  std::vector<std::wstring> cut_in_pieces(std::wstring_view text, std::size_t length) {
    TokenList list;
    TextFeeder feeder(segmenter_, list);
    for (std::size_t i = 0; i < text.size(); i += length) feeder.feed(text.substr(i, length));
    feeder.finish();
    return list.tokens;
  }

  Lexicon lexicon_{dictionary()};
  Segmenter segmenter_{lexicon_};
};

using Cut = SegmenterTest;

TEST_F(Cut, gives_nothing_for_the_empty_text) {
  EXPECT_THAT(cut(L""), IsEmpty());
}

TEST_F(Cut, takes_the_most_probable_words) {
  EXPECT_THAT(cut(L"南京市长江大桥"), ElementsAre(L"南京市", L"长江大桥"));
}

TEST_F(Cut, finds_names_by_the_model) {
  EXPECT_THAT(cut(L"他来到了网易杭研大厦"),
              ElementsAre(L"他", L"来到", L"了", L"网易", L"杭研", L"大厦"));
}

TEST_F(Cut, keeps_case) {
  EXPECT_THAT(cut(L"Data Leak"), ElementsAre(L"Data", L" ", L"Leak"));
}

TEST_F(Cut, keeps_fractions_and_percent_signs_with_their_number) {
  EXPECT_THAT(cut(L"12.5%和v1.2"), ElementsAre(L"12.5%", L"和", L"v1.2"));
}

TEST_F(Cut, gives_punctuation_one_by_one) {
  EXPECT_THAT(cut(L"(!)"), ElementsAre(L"(", L"!", L")"));
}

TEST_F(Cut, keeps_CR_LF_together) {
  EXPECT_THAT(cut(L"\r\n\n\r"), ElementsAre(L"\r\n", L"\n", L"\r"));
}

TEST_F(Cut, keeps_words_with_letters_beyond_ASCII_whole) {
  EXPECT_THAT(cut(L"Müller naïve Привет Ελλάδα"),
              ElementsAre(L"Müller", L" ", L"naïve", L" ", L"Привет", L" ", L"Ελλάδα"));
}

TEST_F(Cut, keeps_digits_with_the_letters_beside_them) {
  EXPECT_THAT(cut(L"é12 12é a1ü2b"), ElementsAre(L"é12", L" ", L"12é", L" ", L"a1ü2b"));
}

TEST_F(Cut, parts_letters_of_other_alphabets_from_Han) {
  EXPECT_THAT(cut(L"先生Müller先生"), ElementsAre(L"先生", L"Müller", L"先生"));
}

TEST_F(Cut, keeps_a_combining_mark_with_the_letter_before_it) {
  EXPECT_THAT(cut(L"cafe\u0301s é\u0301"), ElementsAre(L"cafe\u0301s", L" ", L"é\u0301"));
}

TEST_F(Cut, gives_a_mark_without_a_letter_alone) {
  EXPECT_THAT(cut(L"中\u0301 \u0301"), ElementsAre(L"中", L"\u0301", L" ", L"\u0301"));
}

TEST_F(Cut, keeps_a_sign_outside_the_word_beside_it) {
  EXPECT_THAT(cut(L"foo-Müller"), ElementsAre(L"foo", L"-", L"Müller"));
}

TEST_F(Cut, keeps_Hangul_words_whole) {
  EXPECT_THAT(cut(L"안녕 세계"), ElementsAre(L"안녕", L" ", L"세계"));
}

TEST_F(Cut, parts_the_two_kinds_of_kana) {
  EXPECT_THAT(cut(L"タワーに"), ElementsAre(L"タワー", L"に"));
}

TEST_F(Cut, reads_full_width_forms_as_ASCII) {
  EXPECT_THAT(cut(L"ＡＢＣ１２３"), ElementsAre(L"ABC123"));
}

TEST_F(Cut, reads_full_width_forms_within_other_words) {
  EXPECT_THAT(cut(L"Ｍüller，１２．５％"), ElementsAre(L"Müller", L",", L"12.5%"));
}

TEST_F(Cut, gives_rare_Han_characters_beyond_the_dictionary_one_by_one) {
  EXPECT_THAT(cut(L"𠀀𠀁㐀"), ElementsAre(L"𠀀", L"𠀁", L"㐀"));
}

TEST_F(Cut, keeps_NUL_characters) {
  EXPECT_THAT(cut(std::wstring_view(L"a\0中\0", 4)),
              ElementsAre(L"a", std::wstring(1, L'\0'), L"中", std::wstring(1, L'\0')));
}

TEST_F(Cut, keeps_values_that_are_no_characters) {
  std::wstring text = L"中国";
  std::vector<std::wstring> expected = {L"中国"};
  for (std::uint32_t const value :
       {0xD800u, 0xDFFFu, 0xFFFFu, 0x10FFFFu, 0x110000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    text += static_cast<wchar_t>(value);
    expected.emplace_back(1, static_cast<wchar_t>(value));
  }
  EXPECT_EQ(cut(text), expected);
}

TEST_F(Cut, never_loses_a_character_of_any_value) {
  std::mt19937_64 random(9);
  std::wstring text;
  for (int i = 0; i < 50'000; ++i) {
    auto value = static_cast<std::uint32_t>(random() >> (random() % 32));
    if (value - 0xFF01u < 94u) value = 'x';
    text += static_cast<wchar_t>(value);
  }
  std::wstring joined;
  for (std::wstring const& token : cut(text)) joined += token;
  EXPECT_EQ(joined, text);
}

TEST_F(Cut, is_the_same_for_a_text_in_pieces) {
  std::wstring text;
  std::mt19937 random(4);
  std::wstring const alphabet = L"中国人民ab1.%-é\u0301カひ，\r\n 一二三ＡＢ";
  for (int i = 0; i < 3000; ++i) text += alphabet[random() % alphabet.size()];
  std::vector<std::wstring> const whole = cut(text);
  for (std::size_t const length : {1u, 2u, 3u, 7u, 64u, 1000u}) {
    EXPECT_EQ(cut_in_pieces(text, length), whole) << length;
  }
}

TEST_F(Cut, goes_through_a_line_of_ten_million_characters_without_a_blank) {
  std::wstring text;
  std::wstring const part = L"中华人民共和国成立了龘靐齉爩数据12.5%abc";
  while (text.size() < 10'000'000) text += part;
  class Length : public TokenSink {
   public:
    void token(std::wstring_view token) override { length += token.size(); }
    std::size_t length = 0;
  } sink;
  TextFeeder feeder(segmenter_, sink);
  feeder.feed(text);
  feeder.finish();
  EXPECT_EQ(sink.length, text.size());
}

TEST_F(Cut, makes_one_word_of_a_million_letters) {
  std::wstring const text(1'000'000, L'a');
  EXPECT_THAT(cut(text), ElementsAre(text));
}

TEST_F(Cut, goes_through_a_million_unknown_characters) {
  std::wstring const text(1'000'000, L'龘');
  std::wstring joined;
  for (std::wstring const& token : cut(text)) joined += token;
  EXPECT_EQ(joined, text);
}

class UserWords : public SegmenterTest {};

TEST_F(UserWords, are_cut_as_wholes) {
  lexicon_.load_user_words("数据防泄漏 5 n\n");
  EXPECT_THAT(cut(L"数据防泄漏系统"), ElementsAre(L"数据防泄漏", L"系统"));
}

TEST_F(UserWords, without_a_frequency_are_cut_as_wholes) {
  lexicon_.load_user_words("台中\n");
  EXPECT_THAT(cut(L"台中正确"), ElementsAre(L"台中", L"正确"));
}

TEST_F(UserWords, with_frequency_zero_are_taken_out) {
  ASSERT_THAT(cut(L"中国"), ElementsAre(L"中国"));
  lexicon_.load_user_words("中国 0\n");
  EXPECT_THAT(cut(L"中国"), ElementsAre(L"中", L"国"));
}

TEST_F(UserWords, bring_their_part_of_speech) {
  lexicon_.load_user_words("李小福 2 nr\n");
  EXPECT_EQ(lexicon_.tag(L"李小福"), "nr");
}

TEST_F(UserWords, without_part_of_speech_keep_that_of_the_dictionary) {
  lexicon_.load_user_words("中国 7\n");
  EXPECT_EQ(lexicon_.tag(L"中国"), "ns");
}

TEST_F(UserWords, may_hold_blanks_and_other_alphabets) {
  lexicon_.load_user_words("Müller 5 nr\nEdu Trust 3 nz\n");
  EXPECT_EQ(lexicon_.tag(L"Müller"), "nr");
  EXPECT_EQ(lexicon_.tag(L"Edu Trust"), "nz");
}

TEST_F(UserWords, pass_over_lines_that_are_no_text) {
  using std::literals::operator""sv;
  lexicon_.load_user_words("\xFF\xFE\x00\x01 5 n\n数据防泄漏 5 n\n"sv);
  EXPECT_THAT(cut(L"数据防泄漏"), ElementsAre(L"数据防泄漏"));
}

TEST_F(UserWords, of_huge_frequency_are_bounded) {
  lexicon_.load_user_words("的国 99999999999999999999999999999999\n");
  EXPECT_EQ(lexicon_.find(L"的国").frequency, 1'000'000'000'000u);
}

TEST_F(UserWords, that_are_too_long_are_passed_over) {
  std::string line;
  for (int i = 0; i < 300; ++i) line += "长";
  lexicon_.load_user_words(line + " 5 n\n");
  EXPECT_EQ(lexicon_.longest(), dictionary().longest());
}

TEST_F(UserWords, of_the_longest_length_are_cut_as_wholes) {
  std::string line;
  for (int i = 0; i < 255; ++i) line += "长";
  lexicon_.load_user_words(line + " 5 n\n");
  EXPECT_THAT(cut(std::wstring(255, L'长')), ElementsAre(std::wstring(255, L'长')));
}

TEST_F(UserWords, are_bounded_in_number) {
  std::string list;
  std::mt19937 random(1);
  for (int i = 0; i < 40'000; ++i) {
    for (int k = 0; k < 60; ++k) list += static_cast<char>('a' + random() % 26);
    list += " 1\n";
  }
  lexicon_.load_user_words(list);
  EXPECT_THAT(cut(L"中国人民"), ElementsAre(L"中国", L"人民"));
}

using Tag = SegmenterTest;

TEST_F(Tag, of_an_unknown_ASCII_word_is_eng) {
  EXPECT_EQ(lexicon_.tag(L"abc123"), "eng");
}
TEST_F(Tag, of_a_number_is_m) {
  EXPECT_EQ(lexicon_.tag(L"12.5%"), "m");
}
TEST_F(Tag, of_an_unknown_Han_word_is_x) {
  EXPECT_EQ(lexicon_.tag(L"杭研"), "x");
}
TEST_F(Tag, of_a_word_of_another_alphabet_is_x) {
  EXPECT_EQ(lexicon_.tag(L"Müller"), "x");
}
TEST_F(Tag, of_a_sign_is_x) {
  EXPECT_EQ(lexicon_.tag(L"--"), "x");
}

}  // namespace
