#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "box/HClusterResultMgr.h"

#include "reference/bubble_sort.h"
#include "support/log_capture.h"

namespace {

using Words = std::vector<HString>;
using Values = std::vector<double>;
using Points = std::vector<HPointN>;
using Members = std::vector<int>;
using WeightedWord = std::pair<HString, double>;
using Record = test::LogCapture::Record;

Record const division_by_zero{1, L"../HPointN", L"HPointN::operator /= parameter can't be 0 !"};

// "w0", "w1", ...
Words numbered_words(std::size_t count) {
  Words words;
  for (std::size_t i = 0; i < count; ++i) {
    words.push_back(HString(L"w") + HString(i));
  }
  return words;
}

// The description and the listing of a class whose words have exactly these weights.
HString desc_of(Values const& weights) {
  return HClusterResultMgr::get_class_desc(numbered_words(weights.size()), {HPointN(weights)}, {0});
}

HString feature_of(Values const& weights) {
  return HClusterResultMgr::get_class_feature(numbered_words(weights.size()), {HPointN(weights)},
                                              {0});
}

std::ptrdiff_t line_count(HString const& text) {
  std::wstring const ws = text.get_ws();
  return std::count(ws.begin(), ws.end(), L'\n');
}

TEST(ClassWords, of_weak_words_the_ten_heaviest_describe_the_class) {
  Values weights;
  for (int i = 0; i < 25; ++i) {
    weights.push_back(0.01 * i);
  }
  EXPECT_EQ(desc_of(weights), HString(L"w24 w23 w22 w21 w20 w19 w18 w17 w16 w15 "));
}

TEST(ClassWords, all_strong_words_describe_the_class) {
  Values weights(12, 0.95);
  weights.push_back(0.5);
  EXPECT_EQ(desc_of(weights), HString(L"w0 w1 w2 w3 w4 w5 w6 w7 w8 w9 w10 w11 "));
}

TEST(ClassWords, one_strong_word_stands_alone) {
  EXPECT_EQ(desc_of({0.5, 1.0, 0.8}), HString(L"w1 "));
}

TEST(ClassWords, a_weight_of_nine_tenths_is_strong) {
  EXPECT_EQ(desc_of({std::nextafter(0.9, 0.0), 0.9, 0.1}), HString(L"w1 "));
}

TEST(ClassWords, fewer_than_ten_weak_words_all_describe_the_class) {
  EXPECT_EQ(desc_of({0.1, 0.3, 0.2}), HString(L"w1 w2 w0 "));
}

TEST(ClassWords, the_listing_has_word_and_weight_on_each_line) {
  EXPECT_EQ(feature_of({0.25, 1.0, 0.0}), HString(L"w1(1)\nw0(0.25)\nw2(0)\n"));
}

TEST(ClassWords, the_listing_ends_after_100_lines) {
  HString const text = feature_of(Values(150, 0.5));
  EXPECT_EQ(line_count(text), 100);
  EXPECT_EQ(text.get_last(9), HString(L"w99(0.5)\n"));
}

TEST(ClassWords, equal_weights_keep_vocabulary_order) {
  EXPECT_EQ(desc_of({0.5, 0.7, 0.5, 0.7}), HString(L"w1 w3 w0 w2 "));
  EXPECT_EQ(feature_of({0.5, 0.7, 0.5, 0.7}), HString(L"w1(0.7)\nw3(0.7)\nw0(0.5)\nw2(0.5)\n"));
}

TEST(ClassWords, one_word_is_described_and_listed) {
  EXPECT_EQ(desc_of({0.5}), HString(L"w0 "));
  EXPECT_EQ(feature_of({0.5}), HString(L"w0(0.5)\n"));
}

TEST(ClassWords, an_empty_vocabulary_gives_empty_texts) {
  EXPECT_TRUE(HClusterResultMgr::get_class_desc({}, {HPointN()}, {0}).empty());
  EXPECT_TRUE(HClusterResultMgr::get_class_feature({}, {HPointN()}, {0}).empty());
}

TEST(ClassWords, a_weight_is_the_mean_over_the_members) {
  Points const points{HPointN(Values{1, 0}), HPointN(Values{9, 9}), HPointN(Values{0, 0.5})};
  EXPECT_EQ(HClusterResultMgr::get_class_feature({L"a", L"b"}, points, {0, 2}),
            HString(L"a(0.5)\nb(0.25)\n"));
}

TEST(ClassWords, a_member_outside_the_list_adds_nothing_but_counts) {
  Points const points{HPointN(Values{1, 0.5})};
  for (int const outside : {-1, 1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(HClusterResultMgr::get_class_feature({L"a", L"b"}, points, {0, outside}),
              HString(L"a(0.5)\nb(0.25)\n"));
  }
}

TEST(ClassWords, a_point_of_another_size_adds_nothing_but_counts) {
  Points const points{HPointN(Values{1, 0.5}), HPointN(Values{1})};
  EXPECT_EQ(HClusterResultMgr::get_class_feature({L"a", L"b"}, points, {0, 1}),
            HString(L"a(0.5)\nb(0.25)\n"));
}

TEST(ClassWords, without_members_the_first_ten_words_describe_the_class) {
  HString const text =
      HClusterResultMgr::get_class_desc(numbered_words(12), {HPointN(Values(12, 1.0))}, {});
  EXPECT_EQ(text, HString(L"w0 w1 w2 w3 w4 w5 w6 w7 w8 w9 "));
}

TEST(ClassWords, without_members_each_sorted_list_logs_the_division_by_zero) {
  test::LogCapture const log;
  HClusterResultMgr::get_class_desc({L"a"}, {}, {});
  EXPECT_EQ(log.records(), (std::vector<Record>{division_by_zero}));
  HClusterResultMgr::get_class_feature({L"a"}, {}, {});
  EXPECT_EQ(log.records().size(), 2U);
  std::vector<WeightedWord> sorted;
  HClusterResultMgr::sort_word_by_weight({L"a"}, {}, {}, sorted);
  EXPECT_EQ(log.records().size(), 3U);
}

TEST(ClassWords, a_class_with_members_logs_nothing) {
  test::LogCapture const log;
  desc_of({0.5, 0.7});
  feature_of({0.5, 0.7});
  EXPECT_TRUE(log.records().empty());
}

TEST(ClassWords, sorting_appends_and_then_sorts_all) {
  std::vector<WeightedWord> sorted{{L"old", 0.5}, {L"older", 2.0}};
  HClusterResultMgr::sort_word_by_weight({L"a", L"b"}, {HPointN(Values{0.5, 1})}, {0}, sorted);
  EXPECT_EQ(sorted,
            (std::vector<WeightedWord>{{L"older", 2.0}, {L"b", 1.0}, {L"old", 0.5}, {L"a", 0.5}}));
}

TEST(ClassWords, sorting_an_empty_vocabulary_gives_nothing) {
  std::vector<WeightedWord> sorted;
  HClusterResultMgr::sort_word_by_weight({}, {}, {0}, sorted);
  EXPECT_TRUE(sorted.empty());
}

TEST(ClassWords, no_word_passes_one_whose_weight_is_no_number) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(desc_of({0.1, 0.3, nan, 0.2, 0.4}), HString(L"w1 w0 w2 w4 w3 "));
}

TEST(ClassWords, comparing_words_is_true_unless_the_first_is_lighter) {
  EXPECT_TRUE(HClusterResultMgr::compare_word({L"a", 2.0}, {L"b", 1.0}));
  EXPECT_TRUE(HClusterResultMgr::compare_word({L"a", 1.0}, {L"b", 1.0}));
  EXPECT_FALSE(HClusterResultMgr::compare_word({L"a", 1.0}, {L"b", 2.0}));
}

// Few values, so that many are equal, and some that are no number.
Values random_weights(std::mt19937& random) {
  Values const values{0.0,
                      0.1,
                      0.5,
                      0.9,
                      1.0,
                      -1.0,
                      std::numeric_limits<double>::infinity(),
                      std::numeric_limits<double>::quiet_NaN()};
  bool const has_nan = random() % 2 == 0;
  Values weights(random() % 40);
  for (double& weight : weights) {
    weight = values[random() % (values.size() - (has_nan ? 0 : 1))];
  }
  return weights;
}

std::vector<WeightedWord> plainly_sorted(Values const& weights) {
  std::vector<WeightedWord> list;
  Words const words = numbered_words(weights.size());
  for (std::size_t i = 0; i < weights.size(); ++i) {
    list.emplace_back(words[i], weights[i]);
  }
  reference::bubble_sort(list);
  return list;
}

TEST(ClassWords, the_order_is_that_of_exchanged_neighbours) {
  std::mt19937 random(1);
  for (int round = 0; round < 5000; ++round) {
    Values const weights = random_weights(random);
    std::vector<WeightedWord> const expected = plainly_sorted(weights);
    std::vector<WeightedWord> sorted;
    HClusterResultMgr::sort_word_by_weight(numbered_words(weights.size()), {HPointN(weights)}, {0},
                                           sorted);
    ASSERT_EQ(sorted.size(), expected.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
      ASSERT_EQ(sorted[i].first, expected[i].first) << round;
      ASSERT_EQ(HString(sorted[i].second), HString(expected[i].second)) << round;
    }
  }
}

TEST(ClassWords, the_texts_are_those_of_the_plainly_sorted_list) {
  std::mt19937 random(2);
  for (int round = 0; round < 2000; ++round) {
    Values const weights = random_weights(random);
    HString desc;
    HString first_ten;
    HString feature;
    int place = 0;
    for (auto const& [word, weight] : plainly_sorted(weights)) {
      if (weight >= 0.9) {
        desc << word << L" ";
      }
      if (place < 10) {
        first_ten << word << L" ";
      }
      feature << word << L"(" << HString(weight) << L")\n";
      ++place;
    }
    ASSERT_EQ(desc_of(weights), desc.empty() ? first_ten : desc) << round;
    ASSERT_EQ(feature_of(weights), feature) << round;
  }
}

}  // namespace
