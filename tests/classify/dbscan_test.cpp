#include <cmath>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "boxes.h"
#include "classify/HFileMatchClassifyDBScan.h"
#include "cluster/cluster_type.h"

#include "support/log_capture.h"

namespace {

using test::dbscan_box;
using test::document;
using test::members;
using Record = test::LogCapture::Record;
using Records = std::vector<Record>;

constexpr wchar_t const* tag = L"../HFileMatchClassifyDBScan";

class DBScanClassifier : public testing::Test {
 protected:
  bool match(HFeatureNode const& node, HString const& class_id, QXPPolicyMorvaClustBox const& box) {
    return classifier.match(node, class_id, box, out);
  }
  HFileMatchClassifyDBScan classifier;
  HString out = L"before";
  test::LogCapture log;
};

/// One class over one word, its members at these places.
QXPPolicyMorvaClustBox line_of(std::vector<double> const& places, double eps, int minpts) {
  std::vector<std::vector<double>> lists;
  for (double const place : places) {
    lists.push_back({place});
  }
  return dbscan_box({L"a"}, {members(L"1", L"分类1", eps, minpts, lists)});
}

HFeatureNode at(double place) {
  return document({{L"a", place}});
}

TEST_F(DBScanClassifier, gives_the_name_of_the_class_not_its_id) {
  EXPECT_TRUE(match(at(1.0), L"1", line_of({1.0}, 0.5, 1)));
  EXPECT_EQ(out, HString(L"分类1"));
}

TEST_F(DBScanClassifier, tells_the_number_of_classes) {
  EXPECT_TRUE(match(at(1.0), L"1", line_of({1.0}, 0.5, 1)));
  EXPECT_EQ(log.records(), (Records{{3, tag, L"dbscan node size : 1"}}));
}

TEST_F(DBScanClassifier, a_document_like_a_member_belongs_whatever_the_parameters) {
  EXPECT_TRUE(match(at(3.0), L"1", line_of({1.0, 2.0, 3.0}, -5.0, 100)));
  EXPECT_TRUE(match(at(3.0), L"1", line_of({3.0}, std::numeric_limits<double>::quiet_NaN(), 100)));
}

TEST_F(DBScanClassifier, one_member_within_reach_is_enough_for_one) {
  EXPECT_TRUE(match(at(5.0), L"1", line_of({1.0, 5.25}, 0.5, 1)));
  EXPECT_FALSE(match(at(5.0), L"1", line_of({1.0, 9.0}, 0.5, 1)));
}

TEST_F(DBScanClassifier, too_few_neighbours_leave_the_output_as_it_was) {
  EXPECT_FALSE(match(at(5.0), L"1", line_of({5.25, 4.75, 9.0}, 0.5, 3)));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records().size(), 1U);
  EXPECT_TRUE(match(at(5.0), L"1", line_of({5.25, 4.75, 9.0, 5.125}, 0.5, 3)));
}

TEST_F(DBScanClassifier, a_member_at_the_radius_is_a_neighbour) {
  EXPECT_TRUE(match(at(0.5), L"1", line_of({0.0}, 0.5, 1)));
}

TEST_F(DBScanClassifier, a_member_at_the_radius_and_the_tolerance_is_none) {
  double const limit = 0.5 + 0.000001;
  EXPECT_FALSE(match(at(limit), L"1", line_of({0.0}, 0.5, 1)));
  EXPECT_TRUE(match(at(std::nextafter(limit, 0.0)), L"1", line_of({0.0}, 0.5, 1)));
}

TEST_F(DBScanClassifier, a_member_at_the_tolerance_does_not_coincide) {
  EXPECT_FALSE(match(at(0.000001), L"1", line_of({0.0}, -1.0, 1)));
  EXPECT_TRUE(match(at(std::nextafter(0.000001, 0.0)), L"1", line_of({0.0}, -1.0, 1)));
}

TEST_F(DBScanClassifier, where_no_neighbour_is_needed_any_member_will_do) {
  EXPECT_TRUE(match(at(5.0), L"1", line_of({1000.0}, 0.5, 0)));
  EXPECT_TRUE(match(at(5.0), L"1", line_of({1000.0}, 0.5, -3)));
}

TEST_F(DBScanClassifier, of_classes_with_one_id_only_the_first_is_looked_at) {
  QXPPolicyMorvaClustBox const box = dbscan_box(
      {L"a"},
      {members(L"1", L"first", 0.5, 1, {{9.0}}), members(L"1", L"second", 0.5, 1, {{1.0}})});
  EXPECT_FALSE(match(at(1.0), L"1", box));
  EXPECT_TRUE(match(at(9.0), L"1", box));
  EXPECT_EQ(out, HString(L"first"));
}

TEST_F(DBScanClassifier, a_first_class_without_members_hides_a_second) {
  QXPPolicyMorvaClustBox const box = dbscan_box(
      {L"a"}, {members(L"1", L"first", 0.5, 1, {}), members(L"1", L"second", 0.5, 1, {{1.0}})});
  EXPECT_FALSE(match(at(1.0), L"1", box));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records(), (Records{{3, tag, L"dbscan node size : 2"}, {3, tag, L"not find : 1"}}));
}

TEST_F(DBScanClassifier, an_unknown_class_is_not_found) {
  EXPECT_FALSE(match(at(1.0), L"2", line_of({1.0}, 0.5, 1)));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_EQ(log.records(), (Records{{3, tag, L"dbscan node size : 1"}, {3, tag, L"not find : 2"}}));
}

TEST_F(DBScanClassifier, a_member_of_another_length_is_left_out) {
  QXPPolicyMorvaClustBox const box =
      dbscan_box({L"a"}, {members(L"1", L"name", 0.5, 0, {{1.0, 1.0}, {}}),
                          members(L"2", L"name", 0.5, 2, {{1.25}, {1.0, 1.0}, {1.25}})});
  EXPECT_FALSE(match(at(1.0), L"1", box));
  EXPECT_TRUE(match(at(1.0), L"2", box));
  EXPECT_EQ(log.records().size(), 2U);
}

TEST_F(DBScanClassifier, words_of_the_document_alone_add_to_the_distance) {
  HFeatureNode const node = document({{L"0", 0.6}, {L"a", 1.0}, {L"b", 0.8}});
  EXPECT_TRUE(match(node, L"1", line_of({1.0}, 1.0, 1)));
  EXPECT_FALSE(match(node, L"1", line_of({1.0}, 0.99, 1)));
}

TEST_F(DBScanClassifier, leaves_the_update_of_means_alone) {
  int const old_type = gi_K_ClusterType;
  gi_K_ClusterType = 7;
  match(at(1.0), L"1", line_of({1.0}, 0.5, 1));
  EXPECT_EQ(gi_K_ClusterType, 7);
  gi_K_ClusterType = old_type;
}

}  // namespace
