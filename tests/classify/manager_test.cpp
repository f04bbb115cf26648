#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "box/HFileClusterBoxMgr.h"
#include "box/box_directory.h"
#include "boxes.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "cluster/cluster_type.h"

#include "support/log_capture.h"

namespace {

using test::center;
using test::document;
using test::kmeans_box;
using testing::IsEmpty;
using testing::SizeIs;
using Record = test::LogCapture::Record;
using Records = std::vector<Record>;
using Ids = std::vector<HString>;

constexpr wchar_t const* tag = L"../HFileMatchClassifyMgr";

/// Boxes "one" and "two", each with the classes "near" the document and "far" from it, which bear
/// the name of the box before their own.
class ClassifyManager : public testing::Test {
 protected:
  ClassifyManager() {
    boxes().mb_init = true;
    install(L"one", {L"one near", L"one far"}, classes_of(L"one"));
    install(L"two", {L"two near", L"two far"}, classes_of(L"two"));
  }
  ~ClassifyManager() override { gi_K_ClusterType = old_type; }

  static HFileClusterBoxMgr& boxes() { return *HFileClusterBoxMgr::pbox; }
  static QXPPolicyMorvaClustBox classes_of(HString const& box) {
    return kmeans_box({L"a", L"b"}, {center(box + L" near", box + L" 1", 1.0, {1.0, 0.0}),
                                     center(box + L" far", box + L" 2", 1.0, {9.0, 9.0})});
  }
  void install(HString const& id, Ids const& class_ids, QXPPolicyMorvaClustBox const& box) {
    EXPECT_EQ(box.to_file(boxes().get_box_path(true) + id + L".box"), 0);
    HClusterBoxLocalNode& entry = entries.emplace_back();
    entry.str_box_id = id;
    entry.vt_class_id = class_ids;
    boxes().vt_local_box = entries;
  }

  test::BoxDirectory directory;
  std::vector<HClusterBoxLocalNode> entries;
  HFeatureNode const node = document({{L"a", 1.0}});
  HFileMatchClassifyMgr const& manager = *HFileMatchClassifyMgr::pins();
  HString out = L"before";
  int const old_type = gi_K_ClusterType;
};

TEST_F(ClassifyManager, is_made_once) {
  EXPECT_EQ(HFileMatchClassifyMgr::pins(), HFileMatchClassifyMgr::pmgr);
  EXPECT_EQ(HFileMatchClassifyMgr::pins(), HFileMatchClassifyMgr::pins());
}

TEST_F(ClassifyManager, classes_in_a_box_are_asked_up_to_the_first_that_accepts) {
  test::LogCapture const log;
  EXPECT_TRUE(manager.match(node, Ids{L"one far", L"one near", L"one far"}, L"one", out));
  EXPECT_EQ(out, HString(L"one 1"));
  EXPECT_THAT(log.records(), SizeIs(1));
}

TEST_F(ClassifyManager, a_document_that_no_class_accepts_empties_the_output) {
  EXPECT_FALSE(manager.match(node, Ids{L"one far"}, L"one", out));
  EXPECT_EQ(out, HString());
}

TEST_F(ClassifyManager, a_class_that_is_not_in_the_box_does_not_read_it) {
  EXPECT_FALSE(manager.match(node, Ids{L"two near"}, L"one", out));
  EXPECT_FALSE(manager.match(node, Ids{}, L"one", out));
  EXPECT_THAT(boxes().map_box, IsEmpty());
  EXPECT_EQ(out, HString(L"before"));
}

TEST_F(ClassifyManager, the_index_tells_what_is_in_a_box_not_the_box) {
  entries.back().vt_class_id = {L"two far"};
  boxes().vt_local_box = entries;
  EXPECT_FALSE(manager.match(node, L"two near", L"two", out));
}

TEST_F(ClassifyManager, a_box_of_no_known_type_accepts_nothing) {
  QXPPolicyMorvaClustBox box = classes_of(L"x");
  box.i_cluster_type = 2;
  install(L"x", {L"x near"}, box);
  test::LogCapture const log;
  EXPECT_FALSE(manager.match(node, Ids{L"x near"}, L"x", out));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ClassifyManager, a_document_without_words_belongs_nowhere) {
  test::LogCapture const log;
  HFeatureNode empty;
  empty.map_word_weight[L"a"] = 1.0;
  EXPECT_FALSE(manager.match(empty, Ids{L"one near"}, L"one", out));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ClassifyManager, a_document_without_a_word_of_the_box_is_not_compared) {
  test::LogCapture const log;
  gi_K_ClusterType = 7;
  EXPECT_FALSE(manager.match(document({{L"c", 1.0}}), Ids{L"one near"}, L"one", out));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_THAT(log.records(), IsEmpty());
  EXPECT_EQ(gi_K_ClusterType, 7);
}

TEST_F(ClassifyManager, a_shared_word_is_enough_to_compare_whatever_it_weighs) {
  test::LogCapture const log;
  HFeatureNode sharing = document({{L"b", 1.0}});
  sharing.map_word_weight.clear();
  EXPECT_TRUE(manager.match(sharing, Ids{L"one near"}, L"one", out));
}

TEST_F(ClassifyManager, a_missing_box_file_is_told_and_accepts_nothing) {
  HClusterBoxLocalNode& entry = boxes().vt_local_box.emplace_back();
  entry.str_box_id = L"gone";
  entry.vt_class_id = {L"g"};
  test::LogCapture const log;
  EXPECT_FALSE(manager.match(node, Ids{L"g"}, L"gone", out));
  EXPECT_EQ(log.records(),
            (Records{{1, L"../HFileClusterBoxMgr",
                      (boxes().get_box_path(true) + L"gone.box not exist.").get_ws()}}));
  EXPECT_EQ(out, HString(L"before"));
}

TEST_F(ClassifyManager, a_damaged_box_file_is_an_empty_box) {
  directory.files().write("one.box", "no box");
  test::LogCapture const log;
  EXPECT_FALSE(manager.match(node, Ids{L"one near"}, L"one", out));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ClassifyManager, a_dbscan_box_is_asked_by_its_members) {
  install(L"d", {L"d 1", L"d 2"},
          test::dbscan_box({L"a"}, {test::members(L"d 1", L"far", 0.5, 1, {{9.0}}),
                                    test::members(L"d 2", L"close", 0.5, 1, {{9.0}, {1.0}})}));
  test::LogCapture const log;
  EXPECT_TRUE(manager.match(node, Ids{L"d 1", L"d 2"}, L"d", out));
  EXPECT_EQ(out, HString(L"close"));
  EXPECT_EQ(log.records(),
            (Records(2, {3, L"../HFileMatchClassifyDBScan", L"dbscan node size : 2"})));
}

TEST_F(ClassifyManager, classes_are_looked_for_wherever_they_are) {
  EXPECT_TRUE(manager.match(node, Ids{L"one far", L"two near"}, out));
  EXPECT_EQ(out, HString(L"two 1"));
}

TEST_F(ClassifyManager, a_class_without_a_box_is_told_and_the_others_still_asked) {
  test::LogCapture const log(1);
  EXPECT_TRUE(manager.match(node, Ids{L"nowhere", L"one near"}, out));
  EXPECT_EQ(out, HString(L"one 1"));
  EXPECT_EQ(log.records(), (Records{{1, tag, L"nowhere not find box id."}}));
}

TEST_F(ClassifyManager, boxes_are_asked_in_the_order_of_their_ids) {
  EXPECT_TRUE(manager.match(node, Ids{L"two near", L"one near"}, out));
  EXPECT_EQ(out, HString(L"one 1"));
}

TEST_F(ClassifyManager, no_classes_belong_nowhere) {
  EXPECT_FALSE(manager.match(node, Ids{}, out));
  EXPECT_FALSE(manager.match(node, Ids{}, Ids{L"one"}, out));
  EXPECT_FALSE(manager.match(node, L"one near", Ids{}, out));
  EXPECT_FALSE(manager.match(node, Ids{L"one near"}, Ids{}, out));
  EXPECT_EQ(out, HString(L"before"));
}

TEST_F(ClassifyManager, no_classes_leave_an_index_that_was_not_read_unread) {
  boxes().mb_init = false;
  test::LogCapture const log;
  EXPECT_FALSE(manager.match(node, Ids{}, L"one", out));
  EXPECT_FALSE(boxes().mb_init);
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ClassifyManager, one_class_in_one_box) {
  EXPECT_FALSE(manager.match(node, HString(L"one near"), HString(L"two"), out));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_TRUE(manager.match(node, HString(L"one near"), HString(L"one"), out));
  EXPECT_EQ(out, HString(L"one 1"));
}

TEST_F(ClassifyManager, one_class_wherever_it_is) {
  test::LogCapture const log(3);
  EXPECT_FALSE(manager.match(node, HString(L"nowhere"), out));
  EXPECT_EQ(out, HString(L"before"));
  EXPECT_TRUE(manager.match(node, HString(L"two near"), out));
  EXPECT_EQ(out, HString(L"two 1"));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ClassifyManager, one_class_in_the_boxes_that_have_it_in_their_order) {
  QXPPolicyMorvaClustBox box = classes_of(L"x");
  box.vt_kmeans_node[0].str_class_id = L"one near";
  install(L"x", {L"one near"}, box);
  EXPECT_TRUE(manager.match(node, HString(L"one near"), Ids{L"two", L"x", L"one"}, out));
  EXPECT_EQ(out, HString(L"x 1"));
  EXPECT_TRUE(manager.match(node, HString(L"one near"), Ids{L"two", L"one", L"x"}, out));
  EXPECT_EQ(out, HString(L"one 1"));
  EXPECT_FALSE(manager.match(node, HString(L"one near"), Ids{L"two"}, out));
}

TEST_F(ClassifyManager, parallel_lists_pair_each_class_with_its_box) {
  EXPECT_TRUE(manager.match(node, Ids{L"two near", L"one far"}, Ids{L"two", L"one"}, out));
  EXPECT_EQ(out, HString(L"two 1"));
}

TEST_F(ClassifyManager, parallel_lists_are_asked_in_the_order_of_the_box_ids) {
  EXPECT_TRUE(manager.match(node, Ids{L"two near", L"one near"}, Ids{L"two", L"one"}, out));
  EXPECT_EQ(out, HString(L"one 1"));
}

TEST_F(ClassifyManager, a_box_is_asked_about_the_class_at_its_own_position) {
  EXPECT_FALSE(manager.match(node, Ids{L"two near", L"one near"}, Ids{L"one", L"one far"}, out));
  EXPECT_EQ(out, HString(L"before"));
  test::LogCapture const log;
  EXPECT_FALSE(manager.match(node, Ids{L"one far", L"one near"}, Ids{L"one"}, out));
  EXPECT_EQ(out, HString());
}

TEST_F(ClassifyManager, a_box_beyond_the_last_class_is_not_asked) {
  EXPECT_FALSE(manager.match(node, Ids{L"one near"}, Ids{L"two", L"one"}, out));
  EXPECT_EQ(out, HString(L"before"));
}

}  // namespace
