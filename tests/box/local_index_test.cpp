#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "box/HFileClusterBoxIni.h"
#include "box/HFileClusterBoxMgr.h"
#include "box_directory.h"
#include "host/HFileMD5.h"
#include "host/utf8.h"

#include "support/log_capture.h"
#include "support/memory_limit.h"

namespace {

using test::box_of;
using testing::ElementsAre;
using testing::IsEmpty;
using Record = test::LogCapture::Record;
using Ini = HFileClusterBoxIni;

constexpr wchar_t const* tag = L"../HFileClusterBoxIni";

class LocalIndex : public testing::Test {
 protected:
  /// Writes a box file of the classes and returns its path.
  HString put_box(char const* name, std::vector<HString> const& class_ids) const {
    HString path = boxes / name;
    EXPECT_EQ(box_of(class_ids).to_file(path), 0);
    return path;
  }
  static std::vector<HClusterBoxLocalNode> all() {
    std::vector<HClusterBoxLocalNode> nodes(1);
    Ini::read_local_box_node(nodes);
    return nodes;
  }
  static std::vector<HString> ids() {
    std::vector<HString> found;
    for (HClusterBoxLocalNode const& node : all()) {
      found.push_back(node.str_box_id);
    }
    return found;
  }
  test::BoxDirectory boxes;
};

HClusterBoxLocalNode node_of(HString const& id, HString const& md5,
                             std::vector<HString> const& classes) {
  HClusterBoxLocalNode node;
  node.str_box_id = id;
  node.str_box_md5 = md5;
  node.vt_class_id = classes;
  return node;
}

TEST(LocalBoxNode, starts_empty) {
  HClusterBoxLocalNode const node;
  EXPECT_TRUE(node.str_box_id.empty());
  EXPECT_TRUE(node.str_box_md5.empty());
  EXPECT_THAT(node.vt_class_id, IsEmpty());
}

TEST(LocalBoxNode, tells_itself_in_three_lines) {
  EXPECT_EQ(node_of(L"box", L"0F", {L"a", L"b"}).to_str(),
            HString(L"bod id= box\nbox md5= 0F\nclass id= a|b\n"));
  EXPECT_EQ(HClusterBoxLocalNode().to_str(), HString(L"bod id= \nbox md5= \nclass id= \n"));
}

TEST_F(LocalIndex, an_added_box_is_entered_with_its_md5_and_classes) {
  HString const path = put_box("one.box", {L"a", L"b"});
  HString md5;
  HFileMD5::get_file_md5(path, md5);
  Ini::add_box_file(path);
  std::vector<HClusterBoxLocalNode> const nodes = all();
  ASSERT_EQ(nodes.size(), 1U);
  EXPECT_EQ(nodes[0].str_box_id, HString(L"one"));
  EXPECT_EQ(nodes[0].str_box_md5, md5);
  EXPECT_THAT(nodes[0].vt_class_id, ElementsAre(L"a", L"b"));
}

TEST_F(LocalIndex, an_added_box_is_a_section_with_two_keys) {
  HString const path = put_box("one.box", {L"a", L"b"});
  HString md5;
  HFileMD5::get_file_md5(path, md5);
  Ini::add_box_file(path);
  EXPECT_EQ(boxes.index(), "[one]\nMD5 = " + morvabs::to_utf8(md5.get_ws()) + "\nCLASS = a|b\n");
}

TEST_F(LocalIndex, the_id_is_the_name_without_its_last_suffix) {
  Ini::add_box_file(put_box("a.b.c.box", {}));
  EXPECT_THAT(ids(), ElementsAre(L"a.b.c"));
}

TEST_F(LocalIndex, adding_a_box_again_replaces_its_values) {
  Ini::add_box_file(put_box("one.box", {L"a", L"b"}));
  std::string const old = boxes.index();
  Ini::add_box_file(put_box("one.box", {L"c"}));
  std::vector<HClusterBoxLocalNode> const nodes = all();
  ASSERT_EQ(nodes.size(), 1U);
  EXPECT_THAT(nodes[0].vt_class_id, ElementsAre(L"c"));
  EXPECT_NE(boxes.index().substr(0, 44), old.substr(0, 44)) << "the MD5 stayed";
}

TEST_F(LocalIndex, the_classes_of_a_dbscan_box_are_entered_too) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  box.vt_dbscan_node.resize(2);
  box.vt_dbscan_node[0].str_class_id = L"d";
  box.vt_dbscan_node[1].str_class_id = L"e";
  box.to_file(boxes / "one.box");
  Ini::add_box_file(boxes / "one.box");
  EXPECT_THAT(all().at(0).vt_class_id, ElementsAre(L"d", L"e"));
}

TEST_F(LocalIndex, a_box_without_classes_has_an_empty_list) {
  Ini::add_box_file(put_box("one.box", {}));
  EXPECT_THAT(boxes.index(), testing::EndsWith("\nCLASS = \n"));
  EXPECT_THAT(all().at(0).vt_class_id, IsEmpty());
}

TEST_F(LocalIndex, a_box_file_that_is_missing_changes_nothing_and_logs_twice) {
  boxes.put_index("[other]\nMD5 = 1\n");
  HString const path = boxes / "one.box";
  test::LogCapture const log;
  Ini::add_box_file(path);
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, tag, L"not exist " + path.get_ws()},
                                                {1, tag, path.get_ws() + L"from file fail."}}));
  EXPECT_EQ(boxes.index(), "[other]\nMD5 = 1\n");
}

TEST_F(LocalIndex, a_box_file_that_is_damaged_changes_nothing_and_logs_once) {
  HString const path = boxes.files().write("one.box", "no box");
  test::LogCapture const log;
  Ini::add_box_file(path);
  EXPECT_EQ(log.records(), (std::vector<Record>{{1, tag, path.get_ws() + L"from file fail."}}));
  EXPECT_FALSE(std::filesystem::exists(boxes.files().path() / "box.ini"));
}

TEST_F(LocalIndex, adding_makes_the_manager_but_leaves_its_list) {
  boxes.put_index("[other]\nMD5 = 1\n");
  Ini::add_box_file(put_box("one.box", {L"a"}));
  std::vector<HClusterBoxLocalNode> listed;
  HFileClusterBoxMgr::pins()->get_local_box(listed);
  EXPECT_EQ(listed.size(), 1U);
  HFileClusterBoxMgr::pins()->update_box_ini();
  HFileClusterBoxMgr::pins()->get_local_box(listed);
  EXPECT_EQ(listed.size(), 2U);
}

TEST_F(LocalIndex, removing_a_box_leaves_its_file) {
  HString const path = put_box("one.box", {L"a"});
  Ini::add_box_file(path);
  test::LogCapture const log;
  Ini::del_box_file(path);
  EXPECT_THAT(all(), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(boxes.files().path() / "one.box"));
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(LocalIndex, a_box_whose_file_has_gone_is_removed_with_one_line) {
  HString const path = put_box("one.box", {L"a"});
  Ini::add_box_file(path);
  std::filesystem::remove(boxes.files().path() / "one.box");
  {
    test::LogCapture const log;
    Ini::del_box_file(path);
    EXPECT_EQ(log.records(), (std::vector<Record>{{1, tag, L"not exist " + path.get_ws()}}));
  }
  EXPECT_THAT(all(), IsEmpty());
}

TEST_F(LocalIndex, a_missing_index_empties_the_list_and_is_logged) {
  test::LogCapture const log;
  EXPECT_THAT(all(), IsEmpty());
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{1, tag, L"not exist " + Ini::mstr_box_ini.get_ws()}}));
}

TEST_F(LocalIndex, a_missing_index_leaves_a_single_entry_as_it_was) {
  HClusterBoxLocalNode node = node_of(L"id", L"md5", {L"a"});
  test::LogCapture const log;
  Ini::read_local_box_node(L"one", node);
  EXPECT_EQ(node.to_str(), node_of(L"id", L"md5", {L"a"}).to_str());
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(LocalIndex, deleting_from_a_missing_index_is_silent) {
  test::LogCapture const log;
  Ini::delete_local_box_node(L"one");
  EXPECT_THAT(log.records(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(boxes.files().path() / "box.ini"));
}

TEST_F(LocalIndex, entries_come_in_file_order_and_other_keys_are_passed_over) {
  boxes.put_index("[z]\nNOTE = x\nMD5 = 1\nCLASS = a|b\n[y]\nmd5 = 2\nClass = c\n[x]\nCLASS = d\n");
  std::vector<HClusterBoxLocalNode> const nodes = all();
  ASSERT_EQ(nodes.size(), 3U);
  EXPECT_EQ(nodes[0].to_str(), node_of(L"z", L"1", {L"a", L"b"}).to_str());
  EXPECT_EQ(nodes[1].to_str(), node_of(L"y", L"", {}).to_str());
  EXPECT_EQ(nodes[2].to_str(), node_of(L"x", L"", {L"d"}).to_str());
}

TEST_F(LocalIndex, a_single_entry_is_read_without_its_id) {
  boxes.put_index("[one]\nMD5 = 1\nCLASS = a|b\n");
  HClusterBoxLocalNode node = node_of(L"kept", L"", {});
  Ini::read_local_box_node(L"one", node);
  EXPECT_EQ(node.to_str(), node_of(L"kept", L"1", {L"a", L"b"}).to_str());
}

TEST_F(LocalIndex, an_id_without_a_section_leaves_the_md5_and_empties_the_classes) {
  boxes.put_index("[one]\nMD5 = 1\nCLASS = a|b\n");
  HClusterBoxLocalNode node = node_of(L"id", L"kept", {L"a"});
  Ini::read_local_box_node(L"two", node);
  EXPECT_EQ(node.to_str(), node_of(L"id", L"kept", {}).to_str());
}

TEST_F(LocalIndex, the_first_entry_makes_the_file_and_its_directory) {
  Ini::mstr_box_ini = boxes / "new/box.ini";
  Ini::write_local_box_node(node_of(L"one", L"1", {L"a"}));
  EXPECT_THAT(ids(), ElementsAre(L"one"));
}

TEST_F(LocalIndex, deleting_an_unknown_box_rewrites_the_file_as_it_was) {
  std::string const text = "; note\n[one]\nMD5 = 1\nCLASS = a\n\n[two]\nMD5 = 2\nCLASS = b\n";
  boxes.put_index(text);
  struct stat before {};
  struct stat after {};
  std::string const path = (boxes.files().path() / "box.ini").string();
  stat(path.c_str(), &before);
  Ini::delete_local_box_node(L"three");
  stat(path.c_str(), &after);
  EXPECT_EQ(boxes.index(), text);
  EXPECT_NE(before.st_ino, after.st_ino);
}

TEST_F(LocalIndex, what_else_stands_in_the_file_survives) {
  boxes.put_index("; about one\n[one]\nMD5 = 1\nOWNER = me\n\n[settings]\n# key\nkey = 1\n");
  Ini::write_local_box_node(node_of(L"one", L"2", {L"a"}));
  Ini::write_local_box_node(node_of(L"two", L"3", {L"b"}));
  Ini::delete_local_box_node(L"two");
  EXPECT_EQ(boxes.index(),
            "; about one\n[one]\nMD5 = 2\nOWNER = me\nCLASS = a\n\n[settings]\n# key\nkey = 1\n");
}

TEST_F(LocalIndex, an_index_that_cannot_be_read_is_not_emptied) {
  boxes.put_index("[one]\nMD5 = 1\n");
  std::filesystem::resize_file(boxes.files().path() / "box.ini", (64 << 20) + 1);
  Ini::delete_local_box_node(L"one");
  EXPECT_EQ(std::filesystem::file_size(boxes.files().path() / "box.ini"), (64U << 20U) + 1);
}

TEST_F(LocalIndex, an_index_of_more_entries_than_it_may_have_is_neither_read_nor_lost) {
  std::string text = "[one]\nMD5 = 1\n";
  while (text.size() < 600'000) {
    text += "[x]\n";
  }
  boxes.put_index(text);
  EXPECT_THAT(all(), IsEmpty());
  Ini::write_local_box_node(node_of(L"two", L"2", {L"a"}));
  Ini::delete_local_box_node(L"one");
  EXPECT_EQ(boxes.index(), text);
}

TEST_F(LocalIndex, entries_of_one_box_are_one) {
  boxes.put_index("[one]\nMD5 = 1\nCLASS = a\n[two]\nCLASS = b\n[one]\nMD5 = 2\nCLASS = c\n");
  EXPECT_THAT(ids(), ElementsAre(L"one", L"two"));
  EXPECT_EQ(all().at(0).to_str(), node_of(L"one", L"2", {L"c"}).to_str());
}

TEST_F(LocalIndex, a_line_of_nothing_but_separators_takes_the_memory_of_its_classes) {
  std::size_t const count = std::size_t{1} << 20U;
  boxes.put_index("[one]\nCLASS = " + std::string(count, '|') + "\n");
  constexpr std::size_t room = std::size_t{100} << 20U;
  test::MemoryLimit const limit(room);
  EXPECT_EQ(all().at(0).vt_class_id.size(), count + 1);
}

TEST_F(LocalIndex, an_id_that_is_a_path_is_listed_as_it_stands) {
  boxes.put_index("[../../etc/passwd]\nMD5 = 1\n");
  EXPECT_EQ(ids().front(), HString(L"../../etc/passwd"));
}

class OddId : public LocalIndex, public testing::WithParamInterface<std::wstring> {
 protected:
  HString id() const { return {GetParam().data(), static_cast<int>(GetParam().size())}; }
};

TEST_P(OddId, of_a_box_does_not_disturb_the_others) {
  Ini::write_local_box_node(node_of(L"first", L"1", {L"a"}));
  Ini::write_local_box_node(node_of(id(), L"old", {L"b"}));
  Ini::write_local_box_node(node_of(L"last", L"3", {L"c"}));
  Ini::write_local_box_node(node_of(id(), L"2", {L"d", L"e"}));
  EXPECT_THAT(ids(), testing::UnorderedElementsAre(L"first", id(), L"last"));
  HClusterBoxLocalNode node;
  Ini::read_local_box_node(id(), node);
  EXPECT_EQ(node.to_str(), node_of(HString(), L"2", {L"d", L"e"}).to_str());
  Ini::delete_local_box_node(id());
  EXPECT_THAT(ids(), ElementsAre(L"first", L"last"));
}

TEST_P(OddId, of_a_class_comes_back) {
  Ini::write_local_box_node(node_of(L"box", L"1", {L"a", id(), L"b"}));
  Ini::write_local_box_node(node_of(L"last", L"2", {L"c"}));
  EXPECT_THAT(all().at(0).vt_class_id, ElementsAre(L"a", id(), L"b"));
  EXPECT_THAT(all().at(1).vt_class_id, ElementsAre(L"c"));
}

TEST_P(OddId, of_the_only_class_comes_back) {
  Ini::write_local_box_node(node_of(L"box", L"1", {id()}));
  EXPECT_EQ(HString(all().at(0).vt_class_id), id());
}

INSTANTIATE_TEST_SUITE_P(Texts, OddId,
                         testing::Values(L"", L" leading", L"trailing ", L"\ttab", L"[x]", L"x]",
                                         L"[", L"a=b", L"=", L"; x", L"a ; b", L"#x", L"a\nb",
                                         L"\r\n[evil]\nMD5 = 9", L"100%", L"%0A", L"\"q\"", L"MD5",
                                         L"CLASS", L"分类0", L"../../x", L"a\\",
                                         std::wstring(L"a\0b", 3), L"\xFEFFx", L"<<<EOT",
                                         std::wstring{wchar_t(0xD800), wchar_t(0x110000)}),
                         [](auto const& text) { return "text_" + std::to_string(text.index); });

}  // namespace
