#include <cmath>

#include <gtest/gtest.h>

#include "box/HClusterResultMgr.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"

#include "support/log_capture.h"

namespace {

using Words = std::vector<HString>;
using Values = std::vector<double>;
using Clusters = std::vector<std::vector<int>>;

HFeatureNode document(HString const& name, std::vector<std::pair<HString, double>> const& words) {
  HFeatureNode node;
  node.str_file_id = HString(L"id of ") + name;
  node.str_file_name = name;
  for (auto const& [word, weight] : words) {
    node.vt_words.push_back(word);
    node.map_word_weight[word] = weight;
  }
  return node;
}

std::vector<HFeatureNode> three_documents() {
  return {document(L"one", {{L"apple", 1.0}, {L"pear", 0.5}}), document(L"two", {{L"apple", 0.5}}),
          document(L"three", {{L"stone", 1.0}})};
}

std::vector<HString> names(HClusterResultBase const& node) {
  std::vector<HString> found;
  for (HClusterResultFeatureNode const& file : node.vt_file_node) {
    found.push_back(file.str_file_name);
  }
  return found;
}

TEST(ClassRecord, is_empty_by_default) {
  HClusterResultNode const result;
  EXPECT_EQ(result.n_file_count, 0);
  EXPECT_EQ(result.i_cluster_type, 0);
  EXPECT_TRUE(result.vt_reserved.empty());
  EXPECT_EQ(HClusterResultKMeansNode().d_radius, 0.0);
  EXPECT_EQ(HClusterResultDBScanNode().d_eps, 0.0);
  EXPECT_EQ(HClusterResultDBScanNode().i_minpts, 0);
}

TEST(ClassRecord, base_fills_the_four_texts) {
  HClusterResultBase node;
  node.str_class_name = L"old";
  Words words{L"a", L"b"};
  EXPECT_TRUE(HClusterResultMgr::get_cluster_base_result(&node, 12, words,
                                                         {HPointN(Values{0.5, 1.0})}, {0}));
  EXPECT_EQ(node.str_class_id.length(), 36);
  EXPECT_EQ(node.str_class_name, HString(L"分类12"));
  EXPECT_EQ(node.str_class_desc, HString(L"b "));
  EXPECT_EQ(node.str_class_feature, HString(L"b(1)\na(0.5)\n"));
  EXPECT_TRUE(node.vt_file_node.empty());
  EXPECT_EQ(words, (Words{L"a", L"b"}));
}

TEST(ClassRecord, base_of_nothing_is_refused) {
  Words words{L"a"};
  EXPECT_FALSE(HClusterResultMgr::get_cluster_base_result(nullptr, 0, words, {}, {}));
}

TEST(ClassRecord, base_without_members_logs_once_for_each_text) {
  HClusterResultBase node;
  Words words{L"a", L"b"};
  test::LogCapture const log;
  EXPECT_TRUE(
      HClusterResultMgr::get_cluster_base_result(&node, 0, words, {HPointN(Values{0.5, 1.0})}, {}));
  test::LogCapture::Record const line{1, L"../HPointN",
                                      L"HPointN::operator /= parameter can't be 0 !"};
  EXPECT_EQ(log.records(), (std::vector<test::LogCapture::Record>{line, line}));
  EXPECT_EQ(node.str_class_desc, HString(L"a b "));
  EXPECT_EQ(node.str_class_feature, HString(L"a(0)\nb(0)\n"));
}

TEST(ClassRecord, kmeans_describes_the_run) {
  HClusterResultNode result;
  EXPECT_TRUE(
      HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{0, 1}, {2}}, result));
  EXPECT_EQ(result.n_file_count, 3);
  EXPECT_EQ(result.i_cluster_type, 0);
  EXPECT_EQ(result.vt_words, (Words{L"apple", L"pear", L"stone"}));
  EXPECT_EQ(result.vt_kmeans_node.size(), 2U);
  EXPECT_TRUE(result.vt_dbscan_node.empty());
  EXPECT_TRUE(result.vt_reserved.empty());
}

TEST(ClassRecord, kmeans_classes_have_center_and_radius) {
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{0, 1}}, result);
  HClusterResultKMeansNode const& node = result.vt_kmeans_node.at(0);
  EXPECT_EQ(node.vt_center, (Values{0.75, 0.25, 0.0}));
  EXPECT_EQ(node.d_radius, std::sqrt(0.125));
  EXPECT_EQ(node.str_class_name, HString(L"分类0"));
  EXPECT_EQ(node.str_class_desc, HString(L"apple pear stone "));
  EXPECT_EQ(node.str_class_feature, HString(L"apple(0.75)\npear(0.25)\nstone(0)\n"));
}

TEST(ClassRecord, kmeans_center_and_radius_are_those_of_the_measures) {
  std::vector<HFeatureNode> const features = three_documents();
  Clusters const clusters{{2, 0}, {-1, 1, 7}, {}, {0, 1, 2, 0}};
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(features, clusters, result);
  Words words;
  std::vector<HPointN> points;
  HClusterFileData::format_data(features, words, points, false);
  for (std::size_t k = 0; k < clusters.size(); ++k) {
    HClusterResultKMeansNode const& node = result.vt_kmeans_node.at(k);
    EXPECT_EQ(node.vt_center, HClusterCenter::get_center_point(points, clusters[k]).vt_data) << k;
    EXPECT_EQ(node.d_radius, HClusterDistance::get_max_radius(points, clusters[k])) << k;
  }
}

TEST(ClassRecord, member_files_stand_in_the_order_of_the_list) {
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{2, 0}}, result);
  HClusterResultKMeansNode const& node = result.vt_kmeans_node.at(0);
  ASSERT_EQ(names(node), (Words{L"three", L"one"}));
  EXPECT_EQ(node.vt_file_node[1].str_file_id, HString(L"id of one"));
  EXPECT_EQ(node.vt_file_node[0].vt_data, (Values{0.0, 0.0, 1.0}));
  EXPECT_EQ(node.vt_file_node[1].vt_data, (Values{1.0, 0.5, 0.0}));
}

TEST(ClassRecord, a_file_in_several_places_has_its_coordinates_in_each) {
  HClusterResultNode result;
  HClusterResultMgr::get_dbscan_cluster_result_node(three_documents(), {{0, 0}, {1, 0}}, 1.0, 1,
                                                    result);
  Values const coordinates{1.0, 0.5, 0.0};
  EXPECT_EQ(result.vt_dbscan_node.at(0).vt_file_node.at(0).vt_data, coordinates);
  EXPECT_EQ(result.vt_dbscan_node.at(0).vt_file_node.at(1).vt_data, coordinates);
  EXPECT_EQ(result.vt_dbscan_node.at(1).vt_file_node.at(1).vt_data, coordinates);
}

TEST(ClassRecord, a_member_outside_the_features_gives_no_file) {
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{-1, 1, 3}}, result);
  EXPECT_EQ(names(result.vt_kmeans_node.at(0)), (Words{L"two"}));
}

TEST(ClassRecord, dbscan_classes_repeat_the_parameters) {
  HClusterResultNode result;
  EXPECT_TRUE(HClusterResultMgr::get_dbscan_cluster_result_node(three_documents(), {{0}, {2, 1}},
                                                                0.25, 4, result));
  EXPECT_EQ(result.i_cluster_type, 1);
  EXPECT_EQ(result.n_file_count, 3);
  EXPECT_TRUE(result.vt_kmeans_node.empty());
  ASSERT_EQ(result.vt_dbscan_node.size(), 2U);
  for (HClusterResultDBScanNode const& node : result.vt_dbscan_node) {
    EXPECT_EQ(node.d_eps, 0.25);
    EXPECT_EQ(node.i_minpts, 4);
  }
  EXPECT_EQ(result.vt_dbscan_node[1].str_class_name, HString(L"分类1"));
  EXPECT_EQ(names(result.vt_dbscan_node[1]), (Words{L"three", L"two"}));
}

TEST(ClassRecord, an_empty_list_is_a_class_without_files) {
  HClusterResultNode result;
  EXPECT_TRUE(HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{}}, result));
  HClusterResultKMeansNode const& node = result.vt_kmeans_node.at(0);
  EXPECT_TRUE(node.vt_file_node.empty());
  EXPECT_EQ(node.str_class_desc, HString(L"apple pear stone "));
  EXPECT_TRUE(node.vt_center.empty());
  EXPECT_EQ(node.d_radius, 0.0);
}

TEST(ClassRecord, without_clusters_only_the_run_is_described) {
  HClusterResultNode result;
  result.vt_kmeans_node.resize(1);
  result.vt_dbscan_node.resize(2);
  EXPECT_TRUE(HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {}, result));
  EXPECT_TRUE(
      HClusterResultMgr::get_dbscan_cluster_result_node(three_documents(), {}, 1.0, 1, result));
  EXPECT_EQ(result.vt_words, (Words{L"apple", L"pear", L"stone"}));
  EXPECT_EQ(result.vt_kmeans_node.size(), 1U);
  EXPECT_EQ(result.vt_dbscan_node.size(), 2U);
}

TEST(ClassRecord, a_run_without_files_gives_classes_without_words) {
  HClusterResultNode result;
  EXPECT_TRUE(HClusterResultMgr::get_kmeans_cluster_result_node({}, {{0}, {}}, result));
  ASSERT_EQ(result.vt_kmeans_node.size(), 2U);
  EXPECT_TRUE(result.vt_kmeans_node[0].str_class_desc.empty());
  EXPECT_TRUE(result.vt_kmeans_node[0].str_class_feature.empty());
  EXPECT_TRUE(result.vt_kmeans_node[0].vt_file_node.empty());
}

TEST(ClassRecord, a_second_call_doubles_the_classes) {
  HClusterResultNode result;
  HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{0}, {1}}, result);
  HClusterResultMgr::get_kmeans_cluster_result_node(three_documents(), {{0}, {1}}, result);
  ASSERT_EQ(result.vt_kmeans_node.size(), 4U);
  EXPECT_EQ(result.vt_kmeans_node[2].str_class_name, HString(L"分类0"));
  EXPECT_EQ(result.vt_kmeans_node[3].str_class_name, HString(L"分类1"));
  EXPECT_FALSE(result.vt_kmeans_node[0].str_class_id == result.vt_kmeans_node[2].str_class_id);
  EXPECT_EQ(result.vt_words.size(), 3U);
}

TEST(ClassRecord, each_class_has_an_identifier_of_its_own) {
  HClusterResultNode result;
  HClusterResultMgr::get_dbscan_cluster_result_node(three_documents(), {{0}, {0}}, 1.0, 1, result);
  EXPECT_FALSE(result.vt_dbscan_node.at(0).str_class_id ==
               result.vt_dbscan_node.at(1).str_class_id);
}

}  // namespace
