#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "box/HClusterBox.h"
#include "host/HFile.h"
#include "hostkit/morvabs/box_support.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using test::BoxText;
using Record = test::LogCapture::Record;

constexpr int kmeans = 0;
constexpr int dbscan = 1;

/// Works in a directory of its own, as boxes are written beside the working directory.
class BoxBuilding : public testing::Test {
 protected:
  BoxBuilding() {
    std::filesystem::create_directory(directory.path() / "bin");
    std::filesystem::current_path(directory.path() / "bin");
  }
  ~BoxBuilding() override { std::filesystem::current_path(old_path_); }

  QXPPolicyMorvaClustBox written(HString const& id) const {
    QXPPolicyMorvaClustBox box;
    EXPECT_EQ(box.from_file(HString(L"../data/ClusterBox/") + id + L".box"), 0);
    return box;
  }
  HString words_of(HString const& id) {
    QXPPolicyMorvaClustBox box;
    boxes.get_box(id, box);
    return box.vt_words;
  }

  test::TemporaryDirectory directory;
  HClusterBox boxes;

 private:
  std::filesystem::path const old_path_ = std::filesystem::current_path();
};

HClusterOut class_of_means() {
  HClusterOut out;
  out.str_class_id = L"id";
  out.str_class_name = L"分类0";
  out.str_class_desc = L"description";
  out.vt_center = {0.5, 0.0, 2.0};
  out.d_radius = 1.25;
  out.vt_words = {L"a", L"b", L"c"};
  out.d_eps = 9.0;
  out.i_minpts = 9;
  return out;
}

HClusterOut class_of_members() {
  HClusterOut out;
  out.str_class_id = L"id";
  out.str_class_name = L"分类1";
  out.d_eps = 0.75;
  out.i_minpts = 4;
  out.vt_file_node.resize(1);
  out.vt_file_node[0].str_file_id = L"file";
  out.vt_file_node[0].vt_weight = {1.0, 0.0};
  out.vt_center = {9.0};
  return out;
}

TEST(ClusterOut, starts_empty) {
  HClusterOut const out;
  for (HString const& text :
       {out.str_class_id, out.str_class_name, out.str_class_desc, out.str_class_feature}) {
    EXPECT_TRUE(text.empty());
  }
  EXPECT_TRUE(out.vt_words.empty());
  EXPECT_TRUE(out.vt_file_node.empty());
  EXPECT_TRUE(out.vt_center.empty());
}

TEST_F(BoxBuilding, a_class_of_means_is_stored_with_its_center) {
  boxes.to_box(3, {L"x", L"y", L"z"}, {class_of_means()}, L"box", kmeans);
  QXPPolicyMorvaClustBox expected;
  expected.i_box_value = 3;
  expected.vt_words = {L"x", L"y", L"z"};
  expected.vt_kmeans_node.resize(1);
  expected.vt_kmeans_node[0].str_class_id = L"id";
  expected.vt_kmeans_node[0].str_class_name = L"分类0";
  expected.vt_kmeans_node[0].vt_weight = {0.5, 0.0, 2.0};
  expected.vt_kmeans_node[0].d_radius = 1.25;
  expected.vt_kmeans_node[0].vt_words.resize(3);
  EXPECT_EQ(BoxText::of(written(L"box")), BoxText::of(expected));
}

TEST_F(BoxBuilding, the_word_list_of_a_class_has_its_length_and_empty_words) {
  HClusterOut longer = class_of_means();
  longer.vt_words.resize(5, L"word");
  boxes.to_box(0, {L"x"}, {class_of_means(), longer}, L"box", kmeans);
  QXPPolicyMorvaClustBox const box = written(L"box");
  EXPECT_EQ(box.vt_kmeans_node[0].vt_words, std::vector<HString>(3));
  EXPECT_EQ(box.vt_kmeans_node[1].vt_words, std::vector<HString>(5));
}

TEST_F(BoxBuilding, a_class_of_members_is_stored_with_them) {
  boxes.to_box(0, {L"x", L"y"}, {class_of_members()}, L"box", dbscan);
  QXPPolicyMorvaClustBox expected;
  expected.vt_words = {L"x", L"y"};
  expected.i_cluster_type = 1;
  expected.vt_dbscan_node.resize(1);
  expected.vt_dbscan_node[0].str_class_id = L"id";
  expected.vt_dbscan_node[0].str_class_name = L"分类1";
  expected.vt_dbscan_node[0].d_eps = 0.75;
  expected.vt_dbscan_node[0].i_minpts = 4;
  expected.vt_dbscan_node[0].vt_file_node = class_of_members().vt_file_node;
  EXPECT_EQ(BoxText::of(written(L"box")), BoxText::of(expected));
}

TEST_F(BoxBuilding, without_classes_the_vocabulary_is_stored) {
  boxes.to_box(0, {L"x", L"y"}, {}, L"box", dbscan);
  QXPPolicyMorvaClustBox expected;
  expected.vt_words = {L"x", L"y"};
  expected.i_cluster_type = 1;
  EXPECT_EQ(BoxText::of(written(L"box")), BoxText::of(expected));
}

TEST_F(BoxBuilding, another_type_passes_every_class_over) {
  boxes.to_box(0, {L"x"}, {class_of_means(), class_of_members()}, L"box", 2);
  QXPPolicyMorvaClustBox expected;
  expected.vt_words = {L"x"};
  expected.i_cluster_type = 2;
  EXPECT_EQ(BoxText::of(written(L"box")), BoxText::of(expected));
}

TEST_F(BoxBuilding, classes_keep_their_order) {
  HClusterOut second = class_of_means();
  second.str_class_id = L"a";
  boxes.to_box(0, {L"x"}, {class_of_means(), second}, L"box", kmeans);
  QXPPolicyMorvaClustBox const box = written(L"box");
  EXPECT_EQ(box.vt_kmeans_node[0].str_class_id, HString(L"id"));
  EXPECT_EQ(box.vt_kmeans_node[1].str_class_id, HString(L"a"));
}

TEST_F(BoxBuilding, the_result_of_saving_is_logged) {
  test::LogCapture const log;
  boxes.to_box(0, {}, {}, L"box", kmeans);
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{3, L"../HClusterBox", L"box.to_file result : 0"}}));
}

TEST_F(BoxBuilding, a_box_that_cannot_be_saved_is_only_logged) {
  test::LogCapture const log;
  boxes.to_box(0, {}, {}, L"missing/box", kmeans);
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{3, L"../HClusterBox", L"box.to_file result : -2"}}));
}

TEST_F(BoxBuilding, an_id_with_a_path_in_it_leaves_the_directory) {
  boxes.to_box(0, {L"x"}, {}, L"../../outside", kmeans);
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "outside.box"));
}

TEST_F(BoxBuilding, building_leaves_the_cache_as_it_was) {
  boxes.to_box(0, {L"x"}, {}, L"box", kmeans);
  EXPECT_TRUE(boxes.map_box.empty());
}

TEST_F(BoxBuilding, the_directory_is_made_and_named_with_or_without_separator) {
  EXPECT_EQ(boxes.get_box_path(false), HString(L"../data/ClusterBox"));
  EXPECT_TRUE(std::filesystem::is_directory(directory.path() / "data/ClusterBox"));
  std::filesystem::remove_all(directory.path() / "data");
  EXPECT_EQ(boxes.get_box_path(true), HString(L"../data/ClusterBox/"));
  EXPECT_TRUE(std::filesystem::is_directory(directory.path() / "data/ClusterBox"));
}

TEST_F(BoxBuilding, a_directory_that_cannot_be_made_is_not_told) {
  directory.write("data", "a file");
  test::LogCapture const log;
  EXPECT_EQ(boxes.get_box_path(false), HString(L"../data/ClusterBox"));
  EXPECT_TRUE(log.records().empty());
}

TEST_F(BoxBuilding, a_box_is_read_once) {
  boxes.to_box(0, {L"old"}, {}, L"box", kmeans);
  EXPECT_EQ(words_of(L"box"), HString(L"old"));
  boxes.to_box(0, {L"new"}, {}, L"box", kmeans);
  EXPECT_EQ(words_of(L"box"), HString(L"old"));
}

TEST_F(BoxBuilding, a_box_that_was_not_read_before_is_the_new_one) {
  boxes.to_box(0, {L"old"}, {}, L"box", kmeans);
  boxes.to_box(0, {L"new"}, {}, L"box", kmeans);
  EXPECT_EQ(words_of(L"box"), HString(L"new"));
}

TEST_F(BoxBuilding, a_copy_shares_nothing_with_the_cache) {
  boxes.to_box(0, {L"x"}, {class_of_means()}, L"box", kmeans);
  QXPPolicyMorvaClustBox first;
  boxes.get_box(L"box", first);
  std::string const before = BoxText::of(first);
  first.vt_kmeans_node[0].vt_weight[0] = 9.0;
  first.vt_words.clear();
  QXPPolicyMorvaClustBox second;
  boxes.get_box(L"box", second);
  EXPECT_EQ(BoxText::of(second), before);
}

TEST_F(BoxBuilding, a_box_without_a_file_is_cached_as_the_record_was) {
  QXPPolicyMorvaClustBox box = test::full_box();
  test::LogCapture const log;
  boxes.get_box(L"missing", box);
  EXPECT_EQ(BoxText::of(box), BoxText::of(test::full_box()));
  QXPPolicyMorvaClustBox again;
  boxes.get_box(L"missing", again);
  EXPECT_EQ(BoxText::of(again), BoxText::of(test::full_box()));
  EXPECT_TRUE(log.records().empty());
}

class BoxSingleton : public BoxBuilding {
 protected:
  BoxSingleton() { HClusterBox::pbox = &boxes; }
  ~BoxSingleton() override { HClusterBox::pbox = nullptr; }

  HString words_through_pins() {
    QXPPolicyMorvaClustBox box;
    HClusterBox::pins()->get_box(L"box", box);
    return box.vt_words;
  }
};

TEST(ClusterBox, is_made_at_the_first_use) {
  EXPECT_EQ(HClusterBox::pbox, nullptr);
  HClusterBox* const first = HClusterBox::pins();
  EXPECT_FALSE(first->mb_need_init);
  EXPECT_EQ(HClusterBox::pbox, first);
  EXPECT_EQ(HClusterBox::pins(), first);
  HClusterBox::pbox = nullptr;
  delete first;
}

TEST_F(BoxSingleton, keeps_its_cache) {
  boxes.to_box(0, {L"old"}, {}, L"box", kmeans);
  words_through_pins();
  boxes.to_box(0, {L"new"}, {}, L"box", kmeans);
  EXPECT_EQ(words_through_pins(), HString(L"old"));
}

TEST_F(BoxSingleton, that_needs_init_reads_the_file_every_time) {
  boxes.to_box(0, {L"old"}, {}, L"box", kmeans);
  words_through_pins();
  boxes.set_need_init();
  boxes.to_box(0, {L"new"}, {}, L"box", kmeans);
  EXPECT_EQ(words_through_pins(), HString(L"new"));
  boxes.to_box(0, {L"newer"}, {}, L"box", kmeans);
  EXPECT_EQ(words_through_pins(), HString(L"newer"));
  EXPECT_TRUE(boxes.mb_need_init);
}

}  // namespace
