#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "boxes.h"
#include "classify/HFileMatchClassifyBase.h"
#include "classify/HFileMatchClassifyDBScan.h"
#include "classify/HFileMatchClassifyKMeans.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Words = std::vector<HString>;

TEST(HFileMatchClassifyBase, is_abstract_and_without_a_virtual_destructor) {
  EXPECT_TRUE(std::is_abstract_v<HFileMatchClassifyBase>);
  EXPECT_FALSE(std::has_virtual_destructor_v<HFileMatchClassifyBase>);
  EXPECT_TRUE((std::is_base_of_v<HFileMatchClassifyBase, HFileMatchClassifyKMeans>));
  EXPECT_TRUE((std::is_base_of_v<HFileMatchClassifyBase, HFileMatchClassifyDBScan>));
}

TEST(HFileMatchClassifyBase, holds_nothing_beside_its_operations) {
  EXPECT_EQ(sizeof(HFileMatchClassifyBase), sizeof(void*));
  EXPECT_EQ(sizeof(HFileMatchClassifyKMeans), sizeof(void*));
  EXPECT_EQ(sizeof(HFileMatchClassifyDBScan), sizeof(void*));
}

TEST(HFileMatchClassifyBase, combined_words_are_those_of_the_class_and_new_ones_of_the_document) {
  HFileMatchClassifyKMeans classifier;
  Words out{L"before"};
  classifier.combine_vt_words({L"b", L"a", L"b"}, test::document({{L"c", 1.0}, {L"a", 1.0}}), out);
  EXPECT_THAT(out, ElementsAre(L"before", L"b", L"a", L"b", L"c"));
}

TEST(HFileMatchClassifyBase, a_new_word_that_stands_twice_is_appended_twice) {
  HFileMatchClassifyKMeans classifier;
  Words out;
  classifier.combine_vt_words({L"a"}, test::document({{L"c", 1.0}, {L"a", 1.0}, {L"c", 2.0}}), out);
  EXPECT_THAT(out, ElementsAre(L"a", L"c", L"c"));
}

TEST(HFileMatchClassifyBase, without_class_words_the_documents_words_are_kept_as_they_are) {
  HFileMatchClassifyKMeans classifier;
  Words out;
  classifier.combine_vt_words({}, test::document({{L"b", 1.0}, {L"a", 1.0}, {L"b", 2.0}}), out);
  EXPECT_THAT(out, ElementsAre(L"b", L"a", L"b"));
}

TEST(HFileMatchClassifyBase, the_combined_list_may_be_the_list_of_class_words) {
  HFileMatchClassifyKMeans classifier;
  Words words{L"a"};
  classifier.combine_vt_words(words, test::document({{L"a", 1.0}, {L"b", 1.0}}), words);
  EXPECT_THAT(words, ElementsAre(L"a", L"a", L"b"));
}

TEST(HFileMatchClassifyBase, weights_of_a_document_stand_in_the_order_of_the_words) {
  HFileMatchClassifyDBScan classifier;
  std::vector<double> out;
  classifier.get_vt_node_data({L"b", L"a"}, test::document({{L"a", 1.0}, {L"b", 2.0}}), out);
  EXPECT_THAT(out, ElementsAre(2.0, 1.0));
}

TEST(HFileMatchClassifyBase, a_word_that_the_document_lacks_weighs_nothing) {
  HFileMatchClassifyDBScan classifier;
  std::vector<double> out{7.0, 7.0, 7.0};
  classifier.get_vt_node_data({L"x", L"a"}, test::document({{L"a", 1.0}}), out);
  EXPECT_THAT(out, ElementsAre(0.0, 1.0));
}

TEST(HFileMatchClassifyBase, of_a_word_that_stands_twice_the_last_weight_counts) {
  HFileMatchClassifyDBScan classifier;
  std::vector<double> out;
  classifier.get_vt_data({L"a", L"a"}, {L"a", L"b", L"a"}, {1.0, 2.0, 3.0}, out);
  EXPECT_THAT(out, ElementsAre(3.0, 3.0));
}

TEST(HFileMatchClassifyBase, weights_come_from_the_lists_not_from_the_map) {
  HFileMatchClassifyDBScan classifier;
  HFeatureNode node = test::document({{L"a", 1.0}});
  node.map_word_weight[L"a"] = 5.0;
  std::vector<double> out;
  classifier.get_vt_node_data({L"a"}, node, out);
  EXPECT_THAT(out, ElementsAre(1.0));
}

TEST(HFileMatchClassifyBase, no_words_give_no_weights) {
  HFileMatchClassifyDBScan classifier;
  std::vector<double> out{7.0};
  classifier.get_vt_node_data({}, test::document({{L"a", 1.0}}), out);
  EXPECT_THAT(out, IsEmpty());
  out = {7.0};
  classifier.get_vt_data({}, {L"a"}, {1.0}, out);
  EXPECT_THAT(out, IsEmpty());
}

TEST(HFileMatchClassifyBase, a_word_without_a_weight_is_none) {
  HFileMatchClassifyDBScan classifier;
  std::vector<double> out;
  classifier.get_vt_data({L"a", L"b"}, {L"a", L"b"}, {1.0}, out);
  EXPECT_THAT(out, ElementsAre(1.0, 0.0));
}

}  // namespace
