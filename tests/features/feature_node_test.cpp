#include <gtest/gtest.h>

#include "features/HFeatureNode.h"

namespace {

HFeatureNode filled() {
  HFeatureNode node;
  node.str_file_name = L"name";
  node.str_file_id = L"id";
  node.str_dna = L"dna";
  node.vt_words = {L"a", L"b", L"a"};
  node.vt_counts = {1, 2, 3};
  node.vt_weight = {0.1, 0.2, 0.3};
  node.map_word_weight = {{L"a", 0.3}, {L"b", 0.2}};
  return node;
}

TEST(FeatureNode, is_empty_by_default) {
  HFeatureNode const node;
  EXPECT_EQ(node.get_weight(0), 0.0);
  EXPECT_TRUE(node.map_word_weight.empty());
  EXPECT_TRUE(node.vt_words.empty());
  EXPECT_TRUE(node.str_file_name.empty());
}

TEST(FeatureNode, finds_the_first_of_equal_words) {
  int index = 9;
  EXPECT_TRUE(filled().find_index(L"a", index));
  EXPECT_EQ(index, 0);
}

TEST(FeatureNode, leaves_the_index_where_a_word_is_absent) {
  int index = 9;
  EXPECT_FALSE(filled().find_index(L"c", index));
  EXPECT_EQ(index, 9);
}

TEST(FeatureNode, weight_outside_the_list_is_zero) {
  HFeatureNode const node = filled();
  EXPECT_EQ(node.get_weight(-1), 0.0);
  EXPECT_EQ(node.get_weight(3), 0.0);
  EXPECT_EQ(node.get_weight(2), 0.3);
}

TEST(FeatureNode, clearing_keeps_the_texts) {
  HFeatureNode node = filled();
  node.clear();
  EXPECT_TRUE(node.vt_words.empty());
  EXPECT_TRUE(node.vt_counts.empty());
  EXPECT_TRUE(node.vt_weight.empty());
  EXPECT_TRUE(node.map_word_weight.empty());
  EXPECT_EQ(node.str_file_name, HString(L"name"));
  EXPECT_EQ(node.str_file_id, HString(L"id"));
  EXPECT_EQ(node.str_dna, HString(L"dna"));
}

}  // namespace
