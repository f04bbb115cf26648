#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "host/QXPPolicyMorvaClustBox.h"
#include "host/QXPPolicyMorvaClustBoxStateNode.h"
#include "host/box_file.h"
#include "hostkit/morvabs/box_support.h"
#include "morvabs/box_format.h"

#include "support/temporary_directory.h"

namespace {

using test::BoxText;
using test::full_box;

TEST(BoxRecord, starts_empty) {
  EXPECT_EQ(BoxText::of({}), "0;[][][][]0;");
}

TEST(BoxRecord, its_nodes_start_empty) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].vt_file_node.resize(1);
  EXPECT_EQ(BoxText::of(box), "0;[][][''''0b;[][]''0;][''''0b;0;[''[]]]0;");
}

TEST(BoxRecord, a_copy_shares_nothing) {
  QXPPolicyMorvaClustBox const original = full_box();
  QXPPolicyMorvaClustBox copy = original;
  copy.vt_words[0] += L"x";
  copy.vt_kmeans_node[0].vt_weight[0] = 9.0;
  copy.vt_kmeans_node[0].str_class_id.clear();
  copy.vt_dbscan_node[0].vt_file_node[0].vt_weight[0] = 9.0;
  EXPECT_EQ(BoxText::of(original), BoxText::of(full_box()));
}

TEST(BoxRecord, an_assigned_record_shares_nothing) {
  QXPPolicyMorvaClustBox const original = full_box();
  QXPPolicyMorvaClustBox copy;
  copy = original;
  EXPECT_EQ(BoxText::of(copy), BoxText::of(original));
  copy.vt_dbscan_node[0].vt_file_node.clear();
  EXPECT_EQ(BoxText::of(original), BoxText::of(full_box()));
}

TEST(BoxStateRecord, starts_with_nothing_to_do_and_a_new_empty_box) {
  QXPPolicyMorvaClustBoxStateNode const first;
  QXPPolicyMorvaClustBoxStateNode const second;
  EXPECT_EQ(first.i_state, 0);
  EXPECT_TRUE(first.str_box_id.empty());
  EXPECT_TRUE(first.str_box_md5.empty());
  ASSERT_NE(first.p_box, nullptr);
  EXPECT_NE(first.p_box, second.p_box);
  EXPECT_EQ(BoxText::of(*first.p_box), BoxText::of({}));
}

class BoxFile : public testing::Test {
 protected:
  int read(HString const& path) {
    int const result = box.from_file(path);
    if (result < 0) {
      EXPECT_EQ(BoxText::of(box), BoxText::of(full_box())) << "the record was touched";
    }
    return result;
  }
  test::TemporaryDirectory directory;
  QXPPolicyMorvaClustBox box = full_box();
};

TEST_F(BoxFile, holds_the_whole_box) {
  HString const path = directory / "a.box";
  EXPECT_EQ(full_box().to_file(path), 0);
  QXPPolicyMorvaClustBox loaded;
  EXPECT_EQ(loaded.from_file(path), 0);
  EXPECT_EQ(BoxText::of(loaded), BoxText::of(full_box()));
}

TEST_F(BoxFile, replaces_an_older_one_and_leaves_nothing_else) {
  HString const path = directory / "a.box";
  full_box().to_file(path);
  EXPECT_EQ(QXPPolicyMorvaClustBox().to_file(path), 0);
  EXPECT_EQ(read(path), 0);
  EXPECT_EQ(BoxText::of(box), BoxText::of({}));
  std::filesystem::directory_iterator const entries(directory.path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST_F(BoxFile, that_is_missing_cannot_be_read) {
  EXPECT_EQ(read(directory / "a.box"), -ENOENT);
  EXPECT_EQ(read(HString()), -ENOENT);
  EXPECT_EQ(read(HString(L"a\0b", 3)), -ENOENT);
}

TEST_F(BoxFile, that_is_a_directory_cannot_be_read) {
  EXPECT_EQ(read(directory.path().c_str()), -EISDIR);
}

TEST_F(BoxFile, that_is_empty_is_refused) {
  EXPECT_EQ(read(directory.write("a.box", "")), -EBADMSG);
}

TEST_F(BoxFile, that_is_something_else_is_refused) {
  EXPECT_EQ(read(directory.write("a.box", std::string(1000, 'x'))), -EBADMSG);
}

TEST_F(BoxFile, of_another_version_is_refused) {
  std::string content = *morvabs::encode_box(full_box());
  content[8] = 2;
  EXPECT_EQ(read(directory.write("a.box", content)), -ENOTSUP);
}

TEST_F(BoxFile, beyond_the_largest_size_is_refused_unread) {
  HString const path = directory.write("a.box", *morvabs::encode_box(full_box()));
  std::filesystem::resize_file(directory.path() / "a.box", morvabs::largest_box_file + 1);
  EXPECT_EQ(read(path), -EFBIG);
}

TEST_F(BoxFile, is_copied_byte_by_byte) {
  HString const from = directory.write("a.box", *morvabs::encode_box(full_box()));
  EXPECT_EQ(morvabs::copy_box_file(from, directory / "b.box"), 0);
  EXPECT_EQ(directory.read("b.box"), directory.read("a.box"));
}

TEST_F(BoxFile, is_copied_onto_itself) {
  HString const path = directory.write("a.box", *morvabs::encode_box(full_box()));
  EXPECT_EQ(morvabs::copy_box_file(path, path), 0);
  EXPECT_EQ(read(path), 0);
}

TEST_F(BoxFile, that_is_damaged_is_not_copied) {
  std::string content = *morvabs::encode_box(full_box());
  content.back() ^= 1;
  HString const from = directory.write("a.box", content);
  HString const to = directory.write("b.box", "old");
  EXPECT_EQ(morvabs::copy_box_file(from, to), -EBADMSG);
  EXPECT_EQ(directory.read("b.box"), "old");
}

TEST_F(BoxFile, is_copied_from_a_file_and_into_a_directory_that_exist) {
  HString const from = directory.write("a.box", *morvabs::encode_box(full_box()));
  EXPECT_EQ(morvabs::copy_box_file(directory / "c.box", directory / "b.box"), -ENOENT);
  EXPECT_EQ(morvabs::copy_box_file(from, directory / "missing/b.box"), -ENOENT);
  EXPECT_EQ(morvabs::copy_box_file(from, HString()), -ENOENT);
}

TEST_F(BoxFile, needs_its_directory) {
  EXPECT_EQ(full_box().to_file(directory / "missing/a.box"), -ENOENT);
  EXPECT_EQ(full_box().to_file(HString()), -ENOENT);
}

TEST_F(BoxFile, does_not_replace_a_directory) {
  std::filesystem::create_directory(directory.path() / "a.box");
  EXPECT_EQ(full_box().to_file(directory / "a.box"), -EISDIR);
}

TEST_F(BoxFile, that_would_be_too_large_leaves_the_old_one) {
  HString const path = directory / "a.box";
  full_box().to_file(path);
  QXPPolicyMorvaClustBox large;
  large.vt_words.resize(2500000);
  EXPECT_EQ(large.to_file(path), -EFBIG);
  EXPECT_EQ(read(path), 0);
}

}  // namespace
