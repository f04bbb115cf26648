#include <filesystem>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "box/HFileClusterBoxIni.h"
#include "box/HFileClusterBoxMgr.h"
#include "box_directory.h"
#include "host/Orlec/LocateMgr.h"
#include "hostkit/morvabs/box_support.h"

#include "support/log_capture.h"

namespace {

using test::box_of;
using test::BoxText;
using testing::ElementsAre;
using testing::IsEmpty;
using Record = test::LogCapture::Record;

constexpr wchar_t const* tag = L"../HFileClusterBoxMgr";
constexpr char const* index_of_two = "[one]\nMD5 = 1\nCLASS = a|b\n\n[two]\nMD5 = 2\nCLASS = b|c\n";

class BoxManager : public testing::Test {
 protected:
  static HFileClusterBoxMgr& manager() { return *HFileClusterBoxMgr::pbox; }
  void put_box(char const* name, std::vector<HString> const& class_ids) const {
    EXPECT_EQ(box_of(class_ids).to_file(boxes / name), 0);
  }
  static std::vector<HString> classes_of(HString const& box_id) {
    QXPPolicyMorvaClustBox box;
    EXPECT_TRUE(manager().get_box(box_id, box));
    std::vector<HString> ids;
    manager().get_vt_class_id(box, ids);
    return ids;
  }
  std::wstring path_of(wchar_t const* name) const {
    return HString(boxes.files().path().c_str()).get_ws() + L"//" + name;
  }
  test::BoxDirectory boxes;
};

TEST_F(BoxManager, starts_without_entries) {
  EXPECT_FALSE(manager().mb_init);
  EXPECT_THAT(manager().vt_local_box, IsEmpty());
  EXPECT_THAT(manager().map_box, IsEmpty());
}

TEST_F(BoxManager, reads_the_index_at_the_first_use) {
  boxes.put_index(index_of_two);
  EXPECT_EQ(HFileClusterBoxMgr::pins()->vt_local_box.size(), 2U);
  EXPECT_TRUE(manager().mb_init);
}

TEST_F(BoxManager, is_made_once) {
  HFileClusterBoxMgr::pbox = nullptr;
  HFileClusterBoxMgr* const made = HFileClusterBoxMgr::pins();
  EXPECT_EQ(HFileClusterBoxMgr::pins(), made);
  EXPECT_TRUE(made->mb_init);
  delete made;
}

TEST_F(BoxManager, looks_for_a_missing_index_once) {
  {
    test::LogCapture const log;
    EXPECT_TRUE(manager().init());
    EXPECT_EQ(log.records(),
              (std::vector<Record>{{1, L"../HFileClusterBoxIni",
                                    L"not exist " + HFileClusterBoxIni::mstr_box_ini.get_ws()}}));
  }
  boxes.put_index(index_of_two);
  EXPECT_TRUE(manager().init());
  EXPECT_THAT(HFileClusterBoxMgr::pins()->vt_local_box, IsEmpty());
  manager().update_box_ini();
  EXPECT_EQ(manager().vt_local_box.size(), 2U);
}

TEST_F(BoxManager, a_download_that_is_no_update_touches_nothing) {
  manager().init();
  boxes.put_index(index_of_two);
  EXPECT_TRUE(manager().download(false));
  EXPECT_THAT(manager().vt_local_box, IsEmpty());
}

TEST_F(BoxManager, a_download_that_is_an_update_reads_the_index_again) {
  manager().init();
  boxes.put_index(index_of_two);
  EXPECT_TRUE(manager().download(true));
  EXPECT_EQ(manager().vt_local_box.size(), 2U);
}

TEST_F(BoxManager, downloads_no_box) {
  EXPECT_FALSE(manager().download_box());
  EXPECT_FALSE(manager().download_box());
}

TEST_F(BoxManager, hands_out_a_copy_of_its_entries) {
  boxes.put_index(index_of_two);
  manager().init();
  std::vector<HClusterBoxLocalNode> nodes(5);
  manager().get_local_box(nodes);
  ASSERT_EQ(nodes.size(), 2U);
  nodes[0].vt_class_id.clear();
  EXPECT_EQ(manager().vt_local_box[0].vt_class_id.size(), 2U);
}

TEST_F(BoxManager, a_class_is_in_the_box_that_lists_it) {
  boxes.put_index(index_of_two);
  manager().init();
  EXPECT_TRUE(manager().is_in_box(L"a", L"one"));
  EXPECT_TRUE(manager().is_in_box(L"b", L"two"));
  EXPECT_FALSE(manager().is_in_box(L"a", L"two"));
  EXPECT_FALSE(manager().is_in_box(L"d", L"one"));
  EXPECT_FALSE(manager().is_in_box(L"a", L"three"));
}

TEST_F(BoxManager, every_entry_of_a_box_is_looked_at) {
  boxes.put_index(index_of_two);
  manager().init();
  manager().vt_local_box[1].str_box_id = L"one";
  EXPECT_TRUE(manager().is_in_box(L"c", L"one"));
}

TEST_F(BoxManager, the_last_box_that_lists_a_class_has_it) {
  boxes.put_index(index_of_two);
  manager().init();
  EXPECT_EQ(manager().get_box_id_by_class_id(L"a"), HString(L"one"));
  EXPECT_EQ(manager().get_box_id_by_class_id(L"b"), HString(L"two"));
  EXPECT_EQ(manager().get_box_id_by_class_id(L"d"), HString());
}

TEST_F(BoxManager, without_entries_no_class_is_anywhere) {
  manager().init();
  EXPECT_FALSE(manager().is_in_box(L"a", L"one"));
  EXPECT_EQ(manager().get_box_id_by_class_id(L"a"), HString());
}

TEST_F(BoxManager, an_added_or_removed_box_counts_after_an_update) {
  boxes.put_index("");
  manager().init();
  put_box("one.box", {L"a"});
  HFileClusterBoxIni::add_box_file(boxes / "one.box");
  EXPECT_FALSE(manager().is_in_box(L"a", L"one"));
  manager().update_box_ini();
  EXPECT_TRUE(manager().is_in_box(L"a", L"one"));
  HFileClusterBoxIni::del_box_file(boxes / "one.box");
  EXPECT_TRUE(manager().is_in_box(L"a", L"one"));
  manager().update_box_ini();
  EXPECT_FALSE(manager().is_in_box(L"a", L"one"));
}

TEST_F(BoxManager, its_directory_is_the_locators_with_one_more_separator_if_asked) {
  HString const directory = Orlec::LocateMgr::pins()->get_box_path(true);
  EXPECT_EQ(manager().get_box_path(false), directory);
  EXPECT_EQ(manager().get_box_path(true), directory + L"/");
}

TEST_F(BoxManager, class_ids_are_appended_by_the_type_of_the_box) {
  QXPPolicyMorvaClustBox box = box_of({L"k1", L"k2"});
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].str_class_id = L"d";
  std::vector<HString> ids{L"before"};
  manager().get_vt_class_id(box, ids);
  EXPECT_THAT(ids, ElementsAre(L"before", L"k1", L"k2"));
  box.i_cluster_type = 1;
  manager().get_vt_class_id(box, ids);
  EXPECT_THAT(ids, ElementsAre(L"before", L"k1", L"k2", L"d"));
  box.i_cluster_type = 2;
  manager().get_vt_class_id(box, ids);
  EXPECT_EQ(ids.size(), 4U);
}

TEST_F(BoxManager, a_box_is_found_without_an_entry) {
  put_box("one.box", {L"a"});
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"a"));
}

TEST_F(BoxManager, a_box_without_a_file_is_refused_and_logged) {
  boxes.put_index(index_of_two);
  manager().init();
  QXPPolicyMorvaClustBox box = test::full_box();
  test::LogCapture const log;
  EXPECT_FALSE(manager().get_box(L"one", box));
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, tag, path_of(L"one.box") + L" not exist."}}));
  EXPECT_EQ(BoxText::of(box), BoxText::of(test::full_box()));
  EXPECT_THAT(manager().map_box, IsEmpty());
}

TEST_F(BoxManager, a_box_stays_as_it_was_first_read) {
  put_box("one.box", {L"old"});
  classes_of(L"one");
  put_box("one.box", {L"new"});
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"old"));
  manager().update_box_ini();
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"old"));
}

TEST_F(BoxManager, a_cached_box_needs_no_file) {
  put_box("one.box", {L"a"});
  classes_of(L"one");
  std::filesystem::remove(boxes.files().path() / "one.box");
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"a"));
}

TEST_F(BoxManager, a_copy_shares_nothing_with_the_cache) {
  put_box("one.box", {L"a"});
  QXPPolicyMorvaClustBox box;
  manager().get_box(L"one", box);
  box.vt_kmeans_node.clear();
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"a"));
}

TEST_F(BoxManager, a_damaged_box_is_cached_as_the_record_was) {
  boxes.files().write("one.box", "no box");
  QXPPolicyMorvaClustBox box = test::full_box();
  test::LogCapture const log;
  EXPECT_TRUE(manager().get_box(L"one", box));
  EXPECT_EQ(BoxText::of(box), BoxText::of(test::full_box()));
  put_box("one.box", {L"a"});
  QXPPolicyMorvaClustBox again;
  EXPECT_TRUE(manager().get_box(L"one", again));
  EXPECT_EQ(BoxText::of(again), BoxText::of(test::full_box()));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(BoxManager, a_found_box_is_the_one_in_the_cache) {
  put_box("one.box", {L"a"});
  QXPPolicyMorvaClustBox const* const found = manager().find_box(L"one");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found, &manager().map_box[L"one"]);
  EXPECT_EQ(manager().find_box(L"one"), found);
  EXPECT_THAT(classes_of(L"one"), ElementsAre(L"a"));
}

TEST_F(BoxManager, finds_what_it_would_copy) {
  boxes.files().write("damaged.box", "no box");
  put_box("one.box", {L"a"});
  classes_of(L"one");
  EXPECT_EQ(manager().find_box(L"one"), &manager().map_box[L"one"]);
  ASSERT_NE(manager().find_box(L"damaged"), nullptr);
  EXPECT_EQ(BoxText::of(*manager().find_box(L"damaged")), BoxText::of({}));
  test::LogCapture const log;
  EXPECT_EQ(manager().find_box(L"missing"), nullptr);
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{1, tag, path_of(L"missing.box") + L" not exist."}}));
}

TEST_F(BoxManager, a_box_file_without_a_state_changes_nothing_but_the_index_is_read_again) {
  manager().init();
  boxes.put_index(index_of_two);
  put_box("one.box", {L"x"});
  manager().read_box_to_ini(boxes / "one.box");
  EXPECT_EQ(boxes.index(), index_of_two);
  EXPECT_EQ(manager().vt_local_box.size(), 2U);
}

TEST_F(BoxManager, a_missing_box_file_without_a_state_is_not_told) {
  boxes.put_index(index_of_two);
  test::LogCapture const log;
  manager().read_box_to_ini(boxes / "missing.box");
  EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
