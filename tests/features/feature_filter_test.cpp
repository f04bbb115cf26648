#include "reference/feature_filter.h"

#include <random>

#include <gtest/gtest.h>

#include "features/HFileFeatureFilter.h"

#include "support/log_capture.h"

namespace {

using Words = std::vector<HString>;

HFileCollectFeatureNode record_of(Words const& words) {
  HFileCollectFeatureNode node;
  node.vt_words = words;
  for (std::size_t i = 0; i < words.size(); ++i) {
    node.vt_counts.push_back(static_cast<int>(i) + 1);
    node.vt_weight.push_back(static_cast<double>(i) + 0.5);
  }
  return node;
}

Words filtered(HFileFeatureFilter& filter, Words const& words) {
  HFileCollectFeatureNode node = record_of(words);
  filter.Filter(node);
  return node.vt_words;
}

TEST(HFileFeatureFilter, starts_with_nothing_to_remove) {
  HFileFeatureFilter const filter;
  EXPECT_FALSE(filter.mb_figure);
  EXPECT_FALSE(filter.mb_letter);
  EXPECT_TRUE(filter.vt_keyword.empty());
}

TEST(HFileFeatureFilter, without_settings_everything_stays) {
  HFileFeatureFilter filter;
  HFileCollectFeatureNode const before = record_of({L"12", L"1.5", L"abc", L"1f3a", L"", L"合同"});
  HFileCollectFeatureNode node = before;
  filter.Filter(node);
  EXPECT_EQ(node.vt_words, before.vt_words);
  EXPECT_EQ(node.vt_counts, before.vt_counts);
  EXPECT_EQ(node.vt_weight, before.vt_weight);
}

TEST(HFileFeatureFilter, figures_are_whole_numbers_and_such_with_a_fraction) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  EXPECT_EQ(filtered(filter, {L"12", L"1.5", L"1f3a", L"abc", L"-1", L"合同"}),
            (Words{L"1f3a", L"abc", L"-1", L"合同"}));
}

TEST(HFileFeatureFilter, the_empty_word_is_no_figure) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  EXPECT_EQ(filtered(filter, {L""}), Words{L""});
}

TEST(HFileFeatureFilter, letters_are_words_of_nothing_else) {
  HFileFeatureFilter filter;
  filter.mb_letter = true;
  EXPECT_EQ(filtered(filter, {L"abc", L"ABC", L"abc1", L"a b", L"合同", L"12", L"é"}),
            (Words{L"abc1", L"a b", L"合同", L"12", L"é"}));
}

TEST(HFileFeatureFilter, the_empty_word_goes_with_the_letters) {
  HFileFeatureFilter filter;
  filter.mb_letter = true;
  EXPECT_EQ(filtered(filter, {L"a1", L"", L"b2"}), (Words{L"a1", L"b2"}));
}

TEST(HFileFeatureFilter, hexadecimal_numbers_go_with_figures_and_letters_together) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  filter.mb_letter = true;
  EXPECT_EQ(filtered(filter, {L"1f3a", L"1F3A", L"1g3a", L"0x1f", L"合同"}),
            (Words{L"1g3a", L"0x1f", L"合同"}));
}

TEST(HFileFeatureFilter, hexadecimal_numbers_stay_with_letters_alone) {
  HFileFeatureFilter filter;
  filter.mb_letter = true;
  EXPECT_EQ(filtered(filter, {L"1f3a"}), Words{L"1f3a"});
}

TEST(HFileFeatureFilter, keywords_go_in_their_very_spelling) {
  HFileFeatureFilter filter;
  filter.vt_keyword = {{true, L"Report"}, {true, L"合同"}};
  EXPECT_EQ(filtered(filter, {L"Report", L"report", L"Reports", L"合同", L"合同书"}),
            (Words{L"report", L"Reports", L"合同书"}));
}

TEST(HFileFeatureFilter, a_keyword_that_is_not_checked_removes_nothing) {
  HFileFeatureFilter filter;
  filter.vt_keyword = {{false, L"report"}};
  EXPECT_EQ(filtered(filter, {L"report"}), Words{L"report"});
}

TEST(HFileFeatureFilter, a_keyword_counts_when_any_of_its_entries_is_checked) {
  HFileFeatureFilter filter;
  filter.vt_keyword = {{false, L"report"}, {true, L"report"}, {false, L"report"}};
  EXPECT_TRUE(filtered(filter, {L"report"}).empty());
}

TEST(HFileFeatureFilter, an_empty_keyword_removes_the_empty_word) {
  HFileFeatureFilter filter;
  filter.vt_keyword = {{true, L""}};
  EXPECT_EQ(filtered(filter, {L"", L"a"}), Words{L"a"});
}

TEST(HFileFeatureFilter, neighbours_go_together) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  EXPECT_EQ(filtered(filter, {L"1", L"2", L"a", L"3", L"4"}), Words{L"a"});
}

TEST(HFileFeatureFilter, what_stays_keeps_its_count_and_weight) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  HFileCollectFeatureNode node = record_of({L"1", L"a", L"2", L"3", L"b", L"4"});
  filter.Filter(node);
  EXPECT_EQ(node.vt_words, (Words{L"a", L"b"}));
  EXPECT_EQ(node.vt_counts, (std::vector<int>{2, 5}));
  EXPECT_EQ(node.vt_weight, (std::vector<double>{1.5, 4.5}));
}

TEST(HFileFeatureFilter, only_the_three_lists_change) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  HFileCollectFeatureNode node = record_of({L"1"});
  node.str_agent_id = node.str_file = node.str_kb_size = node.str_reserve = L"1";
  node.t_collect = 1;
  node.i_reserve = 1;
  filter.Filter(node);
  EXPECT_EQ((Words{node.str_agent_id, node.str_file, node.str_kb_size, node.str_reserve}),
            (Words{L"1", L"1", L"1", L"1"}));
  EXPECT_EQ(node.t_collect, 1);
  EXPECT_EQ(node.i_reserve, 1);
}

TEST(HFileFeatureFilter, a_record_without_words_is_left_alone) {
  HFileFeatureFilter filter;
  filter.mb_letter = true;
  HFileCollectFeatureNode node;
  node.vt_counts = {7};
  node.vt_weight = {0.5};
  filter.Filter(node);
  EXPECT_EQ(node.vt_counts, std::vector<int>{7});
  EXPECT_EQ(node.vt_weight, std::vector<double>{0.5});
}

TEST(HFileFeatureFilter, a_list_longer_than_the_words_keeps_its_rest) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  HFileCollectFeatureNode node = record_of({L"1", L"a", L"2"});
  node.vt_counts.push_back(9);
  filter.Filter(node);
  EXPECT_EQ(node.vt_counts, (std::vector<int>{2, 9}));
}

TEST(HFileFeatureFilter, a_list_shorter_than_the_words_loses_what_it_has_of_them) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  HFileCollectFeatureNode node = record_of({L"1", L"a", L"2", L"b"});
  node.vt_counts.resize(2);
  node.vt_weight.clear();
  filter.Filter(node);
  EXPECT_EQ(node.vt_words, (Words{L"a", L"b"}));
  EXPECT_EQ(node.vt_counts, std::vector<int>{2});
  EXPECT_TRUE(node.vt_weight.empty());
}

TEST(HFileFeatureFilter, logs_nothing) {
  test::LogCapture const log;
  HFileFeatureFilter filter;
  filter.mb_figure = filter.mb_letter = true;
  filtered(filter, {L"1", L"a", L"合同"});
  filter.to_str();
  EXPECT_TRUE(log.records().empty());
}

TEST(HFileFeatureFilter, a_letter_lies_between_a_and_z) {
  HFileFeatureFilter const filter;
  for (wchar_t const letter : {L'A', L'Z', L'a', L'z'}) {
    EXPECT_TRUE(filter.is_all_letter(letter));
  }
  for (wchar_t const other : {L'@', L'[', L'`', L'{', L'\0', L'!', L'0', L'Ａ', L'á'}) {
    EXPECT_FALSE(filter.is_all_letter(HString(&other, 1))) << static_cast<int>(other);
  }
}

TEST(HFileFeatureFilter, a_letter_is_told_by_all_its_32_bits) {
  HFileFeatureFilter const filter;
  for (unsigned int const high : {0x100U, 0x10000U, 0x80000000U, 0xFFFFFF00U}) {
    EXPECT_FALSE(filter.is_all_letter(HString(static_cast<wchar_t>(high | 'a'))));
  }
}

TEST(HFileFeatureFilter, the_empty_word_is_all_letters) {
  EXPECT_TRUE(HFileFeatureFilter().is_all_letter(L""));
}

TEST(HFileFeatureFilter, one_other_character_is_enough) {
  HFileFeatureFilter const filter;
  EXPECT_FALSE(filter.is_all_letter(L"1abc"));
  EXPECT_FALSE(filter.is_all_letter(L"ab1c"));
  EXPECT_FALSE(filter.is_all_letter(L"abc1"));
}

TEST(HFileFeatureFilter, settings_as_text) {
  HFileFeatureFilter filter;
  EXPECT_EQ(filter.to_str(), HString(L"mb_figure:false, mb_letter:false"));
  filter.mb_figure = true;
  filter.mb_letter = true;
  EXPECT_EQ(filter.to_str(), HString(L"mb_figure:true, mb_letter:true"));
}

TEST(HFileFeatureFilter, keywords_as_text) {
  HFileFeatureFilter filter;
  filter.mb_letter = true;
  filter.vt_keyword = {{true, L"合同"}, {false, L""}};
  EXPECT_EQ(filter.to_str(), HString(L"mb_figure:false, mb_letter:true"
                                     L", vt_keyword[0]: check:true text:合同"
                                     L", vt_keyword[1]: check:false text:"));
}

/// Words and keywords from a small stock, so that they meet.
HString random_word(std::mt19937& random) {
  static Words const stock = {L"",    L"1",    L"12",   L"1.5", L".5", L"-3.", L"abc", L"Abc",
                              L"ABC", L"1f3a", L"beef", L"0x",  L"x1", L"é",   L"合",  L"合同"};
  return stock[random() % stock.size()];
}

TEST(HFileFeatureFilter, agrees_with_a_walk_that_removes_one_by_one) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 5000; ++round) {
    HFileFeatureFilter filter;
    filter.mb_figure = random() % 2 == 0;
    filter.mb_letter = random() % 2 == 0;
    for (std::size_t left = random() % 4; left > 0; --left) {
      filter.vt_keyword.push_back({random() % 2 == 0, random_word(random)});
    }
    Words words(random() % 12);
    for (HString& word : words) {
      word = random_word(random);
    }
    HFileCollectFeatureNode node = record_of(words);
    HFileCollectFeatureNode expected = node;
    filter.Filter(node);
    reference::filter(filter, expected);
    ASSERT_EQ(node.vt_words, expected.vt_words) << round;
    ASSERT_EQ(node.vt_counts, expected.vt_counts) << round;
    ASSERT_EQ(node.vt_weight, expected.vt_weight) << round;
  }
}

TEST(HFileFeatureFilter, long_lists_are_no_burden) {
  HFileFeatureFilter filter;
  filter.mb_figure = true;
  Words words;
  for (int i = 0; i < 200000; ++i) {
    filter.vt_keyword.push_back({true, HString(L"k") + HString(i, false)});
    words.push_back(i % 2 == 0 ? HString(i, false) : HString(L"k") + HString(i + 1, false));
  }
  EXPECT_EQ(filtered(filter, words), Words{L"k200000"});
}

}  // namespace
