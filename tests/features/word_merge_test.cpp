#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "features/HFileWordNode.h"

namespace {

using List = std::vector<WordNode>;
using Lists = std::vector<List>;

WordNode word(wchar_t const* text, double weight, int count = 1) {
  return {text, L"n", count, weight, 11, 12, 13};
}

List merge(Lists const& lists) {
  List merged;
  unsigned int const size = HFileWordNode::get_vt_word_node(lists, merged);
  EXPECT_EQ(size, merged.size());
  return merged;
}

// The merge as a walk with a linear search.
List plain_merge(Lists const& lists, List merged) {
  std::map<HString, int> met;
  for (List const& list : lists) {
    for (WordNode const& node : list) {
      auto const same = [&node](WordNode const& m) { return m.word.is_match_me(node.word, false); };
      auto const found = std::find_if(merged.begin(), merged.end(), same);
      if (found == merged.end()) {
        merged.push_back(node);
        met[node.word] = 1;
      } else if (auto const entry = met.find(found->word); entry != met.end()) {
        ++entry->second;
      }
    }
  }
  for (WordNode& node : merged) {
    if (auto const entry = met.find(node.word); entry != met.end()) {
      node.weight /= static_cast<double>(entry->second);
    }
  }
  return merged;
}

TEST(WordMerge, a_word_of_two_files_has_its_first_weight_halved) {
  EXPECT_EQ(merge({{word(L"w", 0.8)}, {word(L"w", 0.2)}})[0].weight, 0.4);
  EXPECT_EQ(merge({{word(L"w", 0.2)}, {word(L"w", 0.8)}})[0].weight, 0.1);
}

TEST(WordMerge, a_word_of_three_files_has_a_third_of_its_first_weight) {
  EXPECT_EQ(merge({{word(L"w", 0.9)}, {word(L"w", 0.5)}, {word(L"w", 0.1)}})[0].weight, 0.9 / 3.0);
}

TEST(WordMerge, a_word_of_one_file_keeps_its_weight) {
  EXPECT_EQ(merge({{word(L"a", 0.1)}, {word(L"b", 0.7)}})[0].weight, 0.1);
}

TEST(WordMerge, a_word_that_stands_twice_in_one_list_counts_twice) {
  EXPECT_EQ(merge({{word(L"a", 0.5), word(L"a", 0.25)}})[0].weight, 0.25);
}

TEST(WordMerge, keeps_the_order_of_first_appearance) {
  List const merged = merge({{word(L"b", 1), word(L"a", 1)}, {word(L"c", 1), word(L"a", 1)}});
  ASSERT_EQ(merged.size(), 3U);
  EXPECT_EQ(merged[0].word, HString(L"b"));
  EXPECT_EQ(merged[1].word, HString(L"a"));
  EXPECT_EQ(merged[2].word, HString(L"c"));
}

TEST(WordMerge, keeps_the_other_fields_of_the_first_appearance) {
  WordNode second = word(L"w", 0.2, 9);
  second.tag = L"v";
  second.i_reserve1 = 21;
  WordNode const node = merge({{word(L"w", 0.8, 4)}, {second}})[0];
  EXPECT_EQ(node.tag, HString(L"n"));
  EXPECT_EQ(node.count, 4);
  EXPECT_EQ(node.i_reserve1, 11);
  EXPECT_EQ(node.i_reserve2, 12);
  EXPECT_EQ(node.i_reserve3, 13);
}

TEST(WordMerge, nodes_that_were_there_before_keep_their_weight_and_swallow_their_word) {
  List merged{word(L"old", 0.6)};
  EXPECT_EQ(HFileWordNode::get_vt_word_node(
                {{word(L"old", 0.1), word(L"new", 0.3)}, {word(L"old", 0.2)}}, merged),
            2U);
  EXPECT_EQ(merged[0].weight, 0.6);
  EXPECT_EQ(merged[1].weight, 0.3);
}

TEST(WordMerge, no_lists_give_nothing) {
  EXPECT_TRUE(merge({}).empty());
}

TEST(WordMerge, equals_the_linear_walk_on_random_lists) {
  std::mt19937 random(11);
  std::uniform_int_distribution<int> letter(L'a', L'm');
  std::uniform_int_distribution<int> size(0, 12);
  std::uniform_real_distribution<double> weight(0.0, 1.0);
  for (int round = 0; round < 500; ++round) {
    Lists lists(static_cast<std::size_t>(size(random) / 3));
    List before;
    auto const fill = [&](List& list) {
      for (int n = size(random); n > 0; --n) {
        list.push_back({HString(static_cast<wchar_t>(letter(random))), L"", n, weight(random)});
      }
    };
    for (List& list : lists) {
      fill(list);
    }
    if (round % 4 == 0) {
      fill(before);
    }
    List merged = before;
    HFileWordNode::get_vt_word_node(lists, merged);
    List const expected = plain_merge(lists, before);
    ASSERT_EQ(merged.size(), expected.size());
    for (std::size_t i = 0; i < merged.size(); ++i) {
      EXPECT_EQ(merged[i].word, expected[i].word);
      EXPECT_EQ(merged[i].weight, expected[i].weight);
      EXPECT_EQ(merged[i].count, expected[i].count);
    }
  }
}

}  // namespace
