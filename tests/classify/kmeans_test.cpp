#include <cmath>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "boxes.h"
#include "classify/HFileMatchClassifyKMeans.h"
#include "cluster/cluster_type.h"

#include "support/log_capture.h"

namespace {

using test::center;
using test::document;
using test::kmeans_box;
using testing::IsEmpty;
using Record = test::LogCapture::Record;
using Records = std::vector<Record>;

constexpr wchar_t const* tag = L"../HFileMatchClassifyKMeans";
constexpr int other_type = 7;

class KMeansClassifier : public testing::Test {
 protected:
  KMeansClassifier() { gi_K_ClusterType = other_type; }
  ~KMeansClassifier() override { gi_K_ClusterType = old_type; }

  bool match(HFeatureNode const& node, HString const& class_id, QXPPolicyMorvaClustBox const& box) {
    return classifier.match(node, class_id, box, out);
  }

  HFileMatchClassifyKMeans classifier;
  HString out = L"before";
  test::LogCapture log;

 private:
  int const old_type = gi_K_ClusterType;
};

QXPPolicyMorvaClustBox two_classes() {
  return kmeans_box({L"a", L"b"}, {center(L"1", L"分类1", 2.0, {1.0, 0.0}),
                                   center(L"2", L"分类2", 2.0, {0.0, 1.0})});
}

QXPPolicyMorvaClustBox dna_box(std::vector<HString> const& fields) {
  QXPPolicyMorvaClustBox box = kmeans_box({L"a"}, {});
  for (HString const& field : fields) {
    HString const id(static_cast<unsigned long>(box.vt_kmeans_node.size()));
    box.vt_kmeans_node.push_back(center(id, L"name " + id, 1.0, {1.0}));
    box.vt_kmeans_node.back().str_dna = test::wide_dna(field);
  }
  return box;
}

HFeatureNode document_of_dna(HString const& field) {
  HFeatureNode node = document({{L"a", 1.0}});
  node.str_dna = test::wide_dna(field);
  return node;
}

TEST_F(KMeansClassifier, gives_the_name_of_the_class_not_its_id) {
  EXPECT_TRUE(match(document({{L"a", 1.0}}), L"1", two_classes()));
  EXPECT_EQ(out, HString(L"分类1"));
}

TEST_F(KMeansClassifier, tells_radius_and_distance) {
  EXPECT_TRUE(match(document({{L"a", 1.5}}), L"1", two_classes()));
  EXPECT_EQ(log.records(), (Records{{4, tag, L"radius : 2,  distance : 0.5"}}));
}

TEST_F(KMeansClassifier, a_document_at_the_center_is_within_a_radius_of_nothing) {
  QXPPolicyMorvaClustBox const box = kmeans_box({L"a"}, {center(L"1", L"name", 0.0, {3.0})});
  EXPECT_TRUE(match(document({{L"a", 3.0}}), L"1", box));
}

TEST_F(KMeansClassifier, a_document_at_the_radius_and_the_tolerance_is_outside) {
  QXPPolicyMorvaClustBox const box = kmeans_box({L"a"}, {center(L"1", L"name", 0.5, {0.0})});
  double const limit = 0.5 + 0.000001;
  EXPECT_FALSE(match(document({{L"a", limit}}), L"1", box));
  EXPECT_EQ(out, HString());
  EXPECT_EQ(log.records().size(), 1U);
  EXPECT_TRUE(match(document({{L"a", std::nextafter(limit, 0.0)}}), L"1", box));
}

TEST_F(KMeansClassifier, another_class_that_is_nearer_counts_more_than_the_radius) {
  EXPECT_FALSE(match(document({{L"a", 0.4}, {L"b", 0.6}}), L"1", two_classes()));
  EXPECT_EQ(out, HString());
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(KMeansClassifier, of_equally_near_classes_the_earlier_is_the_nearest) {
  HFeatureNode const node = document({{L"a", 0.5}, {L"b", 0.5}});
  EXPECT_FALSE(match(node, L"2", two_classes()));
  EXPECT_EQ(out, HString());
  EXPECT_TRUE(match(node, L"1", two_classes()));
}

TEST_F(KMeansClassifier, of_classes_with_one_id_the_last_is_meant) {
  QXPPolicyMorvaClustBox box = two_classes();
  box.vt_kmeans_node[1].str_class_id = L"1";
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"1", box));
  EXPECT_TRUE(match(document({{L"b", 1.0}}), L"1", box));
  EXPECT_EQ(out, HString(L"分类2"));
}

TEST_F(KMeansClassifier, words_of_the_document_alone_add_to_the_distance) {
  QXPPolicyMorvaClustBox const box = kmeans_box({L"b"}, {center(L"1", L"name", 1.0, {0.0})});
  EXPECT_TRUE(match(document({{L"a", 0.6}, {L"c", 0.8}}), L"1", box));
  EXPECT_EQ(log.records(), (Records{{4, tag, L"radius : 1,  distance : 1"}}));
}

TEST_F(KMeansClassifier, coordinates_are_those_of_the_map_for_words_of_either_list) {
  HFeatureNode node = document({{L"c", 9.0}});
  node.map_word_weight = {{L"a", 3.0}, {L"c", 4.0}, {L"d", 100.0}};
  QXPPolicyMorvaClustBox const box = kmeans_box({L"a"}, {center(L"1", L"name", 5.0, {0.0})});
  EXPECT_TRUE(match(node, L"1", box));
  EXPECT_EQ(log.records(), (Records{{4, tag, L"radius : 5,  distance : 5"}}));
}

TEST_F(KMeansClassifier, of_a_word_that_stands_twice_the_last_weight_counts) {
  QXPPolicyMorvaClustBox const box =
      kmeans_box({L"b", L"a", L"b"}, {center(L"1", L"name", 0.0, {50.0, 1.0, 2.0})});
  EXPECT_TRUE(match(document({{L"a", 1.0}, {L"b", 2.0}}), L"1", box));
}

TEST_F(KMeansClassifier, a_box_without_classes_has_none_to_find) {
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"1", kmeans_box({L"a"}, {})));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records(), (Records{{3, tag, L"not find : 1"}}));
  EXPECT_EQ(gi_K_ClusterType, other_type);
}

TEST_F(KMeansClassifier, an_unknown_class_is_not_found) {
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"3", two_classes()));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records(), (Records{{3, tag, L"not find : 3"}}));
  EXPECT_EQ(gi_K_ClusterType, 0);
}

TEST_F(KMeansClassifier, a_center_of_another_length_ends_the_question) {
  QXPPolicyMorvaClustBox box = two_classes();
  box.vt_kmeans_node[1].vt_weight.push_back(1.0);
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"1", box));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records(),
            (Records{{1, tag, L"classNode.vt_words.size() : 2, classNode.vt_weight.size()3"}}));
  EXPECT_EQ(gi_K_ClusterType, 0);
}

TEST_F(KMeansClassifier, the_first_class_decides_how_means_are_updated) {
  QXPPolicyMorvaClustBox box = two_classes();
  box.vt_kmeans_node[1].str_dna = L"x";
  match(document({{L"a", 1.0}}), L"1", box);
  EXPECT_EQ(gi_K_ClusterType, 0);
  box.vt_kmeans_node[0].str_dna = L"x";
  box.vt_kmeans_node[1].vt_weight.clear();
  match(document({{L"a", 1.0}}), L"1", box);
  EXPECT_EQ(gi_K_ClusterType, 1);
}

TEST_F(KMeansClassifier, a_box_of_dnas_is_compared_by_them) {
  QXPPolicyMorvaClustBox const box = dna_box({L"10000000", L"20000000"});
  EXPECT_TRUE(match(document_of_dna(L"20000000"), L"1", box));
  EXPECT_EQ(out, HString(L"name 1"));
  EXPECT_EQ(log.records(), (Records{{4, tag, L"radius : 1,  distance : 0"}}));
  EXPECT_FALSE(match(document_of_dna(L"20000000"), L"0", box));
}

TEST_F(KMeansClassifier, a_box_of_one_dna_is_compared_by_words) {
  QXPPolicyMorvaClustBox const box = dna_box({L"10000000"});
  EXPECT_TRUE(match(document_of_dna(L"F0000000"), L"0", box));
  EXPECT_EQ(gi_K_ClusterType, 1);
  EXPECT_EQ(log.records(), (Records{{4, tag, L"radius : 1,  distance : 0"}}));
}

TEST_F(KMeansClassifier, each_text_that_is_no_dna_is_told_at_each_question) {
  QXPPolicyMorvaClustBox box = dna_box({L"10000000", L"20000000"});
  box.vt_kmeans_node[1].str_dna = L"abc";
  HFeatureNode const node = document({{L"a", 1.0}});
  EXPECT_TRUE(match(node, L"1", box));
  Record const of_document{1, L"../HFileDNA", L"dna leng not is 1024, str_dna.length:0"};
  Record const of_class{1, L"../HFileDNA", L"dna leng not is 1024, str_dna.length:3"};
  EXPECT_EQ(log.records(),
            (Records{of_document, of_class, {4, tag, L"radius : 1,  distance : 0"}}));
}

TEST_F(KMeansClassifier, a_document_without_a_dna_is_near_to_no_dna) {
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"0", dna_box({L"10000000", L"20000000"})));
  EXPECT_EQ(out, HString());
}

TEST_F(KMeansClassifier, a_weight_that_is_no_number_is_near_to_nothing) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(match(document({{L"a", nan}}), L"1", two_classes()));
  EXPECT_EQ(out, HString());
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(KMeansClassifier, a_center_that_is_no_number_hides_no_other) {
  QXPPolicyMorvaClustBox box = two_classes();
  box.vt_kmeans_node[0].vt_weight[1] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(match(document({{L"a", 1.0}}), L"1", box));
  EXPECT_TRUE(match(document({{L"a", 1.0}}), L"2", box));
}

}  // namespace
